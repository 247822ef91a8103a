#include "platform/linux/desktop/LogindSleep.h"

namespace ondrel::platform::desktop {

LogindSleep::LogindSleep(BusConnector bus) {
  scope_.spawn(connect(std::move(bus)));
}

async::Task<void> LogindSleep::connect(BusConnector bus) {
  const auto connection = co_await bus();
  if (!connection)
    co_return;
  nameWatch_ = BusNameWatch(connection, "org.freedesktop.login1",
                            [this](const std::string& owner) { logind_ = owner; });
  signals_ = BusSubscription(
      connection, "org.freedesktop.login1.Manager", "PrepareForSleep", "/org/freedesktop/login1",
      [this](const std::string& sender, const std::string&, GVariant* arguments) {
        if (sender != logind_ || !g_variant_is_of_type(arguments, G_VARIANT_TYPE("(b)")))
          return;
        gboolean goesToSleep = FALSE;
        g_variant_get(arguments, "(b)", &goesToSleep);
        if (!goesToSleep)
          didWake.emit();
      });
}

} // namespace ondrel::platform::desktop
