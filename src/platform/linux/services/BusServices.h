#pragma once

#include "platform/desktop/DesktopServices.h"
#include "platform/linux/desktop/MessageBus.h"

namespace ondrel::platform::services {

// Services by their names on the session bus, those that the bus would start among them; the keeper of
// settings by what GIO has found.
class BusServices final : public DesktopServices {
 public:
  explicit BusServices(desktop::BusConnector bus = desktop::sessionBus) : bus_(std::move(bus)) {}

  async::Task<std::vector<DesktopService>> missing() override;

 private:
  const desktop::BusConnector bus_;
};

} // namespace ondrel::platform::services
