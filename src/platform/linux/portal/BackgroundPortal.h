#pragma once

#include "async/Scope.h"
#include "platform/UserDefaults.h"
#include "platform/desktop/BackgroundApplications.h"
#include "platform/desktop/LoginItem.h"
#include "platform/linux/desktop/MessageBus.h"

#include <string>
#include <vector>

namespace ondrel::platform::portal {

// org.freedesktop.portal.Background: the program's line in the desktop's list of what runs in the background,
// and, for a program in a sandbox, its start at login. The portal can't be asked what it has granted, so the
// last answer is kept.
class BackgroundPortal final : public BackgroundApplications, public LoginItem {
 public:
  // The defaults outlive it. `command` is what is run at login.
  BackgroundPortal(UserDefaults& defaults, std::vector<std::string> command,
                   desktop::BusConnector bus = desktop::sessionBus);

  void setStatus(const std::string& message) override;
  bool isEnabled() const override;
  async::Task<std::expected<void, std::string>> setEnabled(bool enabled) override;

 private:
  async::Task<void> tell(std::string message);

  UserDefaults& defaults_;
  const std::vector<std::string> command_;
  const desktop::BusConnector bus_;
  async::Scope scope_;
};

} // namespace ondrel::platform::portal
