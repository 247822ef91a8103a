#pragma once

#include "async/Task.h"

namespace ondrel::platform {
class DockTile;
}
namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::jmap {

class MailQueries;

// Keeps AppSettings::unreadCount and the launcher's badge at the number of unread messages in the inbox. Main
// thread only.
class UnreadBadge {
 public:
  // All outlive it.
  UnreadBadge(MailQueries& queries, settings::AppSettings& settings, platform::DockTile& dockTile);

  // Asks the server. When that fails all stays as it is.
  async::Task<void> refresh();
  // No number, as for an account that nothing is known of yet. What is being counted belongs to another one.
  void clear();

 private:
  MailQueries& queries_;
  settings::AppSettings& settings_;
  platform::DockTile& dockTile_;
  unsigned accountNumber_ = 0;
};

} // namespace ondrel::jmap
