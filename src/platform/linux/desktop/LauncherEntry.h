#pragma once

#include "async/Scope.h"
#include "platform/desktop/LauncherBadge.h"
#include "platform/linux/desktop/MessageBus.h"

#include <cstdint>

namespace ondrel::platform::desktop {

// The number on the program's icon, by the signal com.canonical.Unity.LauncherEntry.Update, which the
// launchers and docks of several desktops listen to. Nobody answers it.
class LauncherEntry final : public LauncherBadge {
 public:
  explicit LauncherEntry(std::string applicationId, BusConnector bus = sessionBus);

  // What isn't a number counts as none.
  void setLabel(const std::optional<std::string>& label) override;

 private:
  async::Task<void> connect(BusConnector bus);
  void update() const;

  const std::string applicationId_;
  std::optional<std::int64_t> count_;
  glib::Ref<GDBusConnection> connection_;
  BusNameWatch launcherWatch_;
  async::Scope scope_;
};

} // namespace ondrel::platform::desktop
