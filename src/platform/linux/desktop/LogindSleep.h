#pragma once

#include "async/Scope.h"
#include "platform/desktop/SleepMonitor.h"
#include "platform/linux/desktop/MessageBus.h"

namespace ondrel::platform::desktop {

// Wake-ups as systemd-logind tells them on the system bus. Without that bus or logind there are none.
class LogindSleep final : public SleepMonitor {
 public:
  explicit LogindSleep(BusConnector bus = systemBus);

 private:
  async::Task<void> connect(BusConnector bus);

  std::string logind_; // its unique name
  BusNameWatch nameWatch_;
  BusSubscription signals_;
  async::Scope scope_;
};

} // namespace ondrel::platform::desktop
