#include "platform/linux/desktop/DefaultMailService.h"

#include "base/Translation.h"
#include "platform/linux/text/SafeText.h"

#include <chrono>

namespace ondrel::platform::desktop {

namespace {

constexpr const char* name = "org.velmora.Ondrel.DefaultMailHelper";
constexpr std::chrono::seconds limit{25};
constexpr std::size_t longestText = 300; // characters

} // namespace

async::Task<std::expected<void, std::string>>
DefaultMailService::setAsDefaultMailClient(std::string bundleIdentifier) {
  const auto connection = co_await bus_();
  if (!connection)
    co_return std::unexpected(base::tr("There is no session bus, by which the desktop could be asked."));
  auto call = glib::adopt(
      g_dbus_message_new_method_call(name, objectPath(name).c_str(), name, "SetAsDefaultMailClient"));
  g_dbus_message_set_body(call.get(), g_variant_new("(s)", bundleIdentifier.c_str()));
  const auto reply = co_await callBus(connection, std::move(call), limit);
  if (!reply)
    co_return std::unexpected(reply.error());
  if (isError(*reply))
    co_return std::unexpected(errorText(*reply));
  auto* told = argumentsOf(reply->get(), "(bs)");
  if (!told)
    co_return std::unexpected("");
  gboolean success = FALSE;
  const char* error = nullptr;
  g_variant_get(told, "(b&s)", &success, &error);
  if (success)
    co_return {};
  co_return std::unexpected(text::boundedUtf8(error, longestText));
}

} // namespace ondrel::platform::desktop
