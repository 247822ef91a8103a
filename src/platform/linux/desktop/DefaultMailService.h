#pragma once

#include "platform/desktop/DefaultMailHelper.h"
#include "platform/linux/desktop/MessageBus.h"

namespace ondrel::platform::desktop {

// Asks org.velmora.Ondrel.DefaultMailHelper, a program that the session bus starts outside of any sandbox.
class DefaultMailService final : public DefaultMailHelper {
 public:
  explicit DefaultMailService(BusConnector bus = sessionBus) : bus_(std::move(bus)) {}

  async::Task<std::expected<void, std::string>> setAsDefaultMailClient(std::string bundleIdentifier) override;

 private:
  const BusConnector bus_;
};

} // namespace ondrel::platform::desktop
