#pragma once

#include "async/Task.h"
#include "jmap/protocol/RetryingWorker.h"

namespace ondrel::platform {
class LauncherBadge;
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
  UnreadBadge(MailQueries& queries, settings::AppSettings& settings, platform::LauncherBadge& launcherBadge);

  // Asks the server, for a minute at most. When that fails, or is cancelled, all stays as it is.
  async::Task<WorkOutcome> refresh();
  // No number, as for an account that nothing is known of yet.
  void clear();

 private:
  MailQueries& queries_;
  settings::AppSettings& settings_;
  platform::LauncherBadge& launcherBadge_;
};

} // namespace ondrel::jmap
