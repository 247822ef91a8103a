#include "platform/linux/portal/BackgroundPortal.h"

#include "base/Log.h"
#include "base/Translation.h"
#include "platform/linux/portal/PortalRequest.h"

#include <chrono>
#include <utility>

namespace ondrel::platform::portal {

namespace {

constexpr base::Logger logger("system");
constexpr const char* interface = "org.freedesktop.portal.Background";
constexpr const char* keptAnswer = "_loginItemGranted";
constexpr const char* noParent = "";
constexpr std::chrono::seconds limit{10};

GVariant* commandLine(const std::vector<std::string>& words) {
  GVariantBuilder list;
  g_variant_builder_init(&list, G_VARIANT_TYPE_STRING_ARRAY);
  for (const auto& word : words)
    g_variant_builder_add(&list, "s", word.c_str());
  return g_variant_builder_end(&list);
}

} // namespace

BackgroundPortal::BackgroundPortal(UserDefaults& defaults, std::vector<std::string> command,
                                   desktop::BusConnector bus)
    : defaults_(defaults), command_(std::move(command)), bus_(std::move(bus)) {
}

bool BackgroundPortal::isEnabled() const {
  return defaults_.boolean(keptAnswer).value_or(false);
}

async::Task<std::expected<void, std::string>> BackgroundPortal::setEnabled(bool enabled) {
  auto connection = co_await bus_();
  if (!connection)
    co_return std::unexpected("there is no session bus");
  const auto answer = co_await requestFromPortal(
      std::move(connection), interface, "RequestBackground", [this, enabled](const std::string& token) {
        GVariantBuilder options;
        g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add(&options, "{sv}", "handle_token", g_variant_new_string(token.c_str()));
        g_variant_builder_add(&options, "{sv}", "reason",
                              // TRANSLATORS: why the program wants to run in the background
                              g_variant_new_string(base::tr("Watch for new mail")));
        g_variant_builder_add(&options, "{sv}", "autostart", g_variant_new_boolean(enabled));
        g_variant_builder_add(&options, "{sv}", "commandline", commandLine(command_));
        return g_variant_new("(s@a{sv})", noParent, g_variant_builder_end(&options));
      });
  if (!answer)
    co_return std::unexpected(answer.error());
  gboolean granted = FALSE;
  g_variant_lookup(answer->get(), "autostart", "b", &granted);
  defaults_.set(keptAnswer, granted != FALSE);
  changed.emit();
  if (enabled && !granted)
    co_return std::unexpected("the desktop doesn't allow it");
  co_return {};
}

void BackgroundPortal::setStatus(const std::string& message) {
  scope_.spawn(tell(message));
}

async::Task<void> BackgroundPortal::tell(std::string message) {
  const auto connection = co_await bus_();
  if (!connection)
    co_return;
  GVariantBuilder options;
  g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&options, "{sv}", "message", g_variant_new_string(message.c_str()));
  auto call = glib::adopt(g_dbus_message_new_method_call(portalName, portalPath, interface, "SetStatus"));
  g_dbus_message_set_body(call.get(), g_variant_new("(@a{sv})", g_variant_builder_end(&options)));
  const auto reply = co_await desktop::callBus(connection, std::move(call), limit);
  // Most desktops keep such a list of sandboxed programs alone, if at all.
  if (!reply)
    logger.debug("The list of background applications isn't told: {}", reply.error());
  else if (desktop::isError(*reply))
    logger.debug("The list of background applications isn't told: {}", desktop::errorText(*reply));
}

} // namespace ondrel::platform::portal
