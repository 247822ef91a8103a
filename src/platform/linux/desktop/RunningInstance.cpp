#include "platform/linux/desktop/RunningInstance.h"

#include "base/Log.h"
#include "base/Text.h"
#include "platform/linux/desktop/MessageBus.h"
#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

#include <cstdlib>

namespace ondrel::platform::desktop {

namespace {

constexpr base::Logger logger("system");

constexpr int patience = 20000; // milliseconds

GVariant* platformData() {
  GVariantBuilder data;
  g_variant_builder_init(&data, G_VARIANT_TYPE_VARDICT);
  const auto add = [&data](const char* key, const char* variable) {
    const char* value = g_getenv(variable);
    if (value && base::isValidUtf8(value))
      g_variant_builder_add(&data, "{sv}", key, g_variant_new_string(value));
  };
  add("activation-token", "XDG_ACTIVATION_TOKEN");
  add("desktop-startup-id", "DESKTOP_STARTUP_ID");
  return g_variant_builder_end(&data);
}

GVariant* texts(const std::vector<std::string>& urls) {
  GVariantBuilder list;
  g_variant_builder_init(&list, G_VARIANT_TYPE_STRING_ARRAY);
  for (const auto& url : urls)
    g_variant_builder_add(&list, "s", url.c_str());
  return g_variant_builder_end(&list);
}

} // namespace

bool RunningInstance::isThere() const {
  const auto bus = glib::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  if (!bus)
    return false;
  const glib::Owned<GVariant> reply(
      g_dbus_connection_call_sync(bus.get(), "org.freedesktop.DBus", "/", "org.freedesktop.DBus",
                                  "NameHasOwner", g_variant_new("(s)", id_.c_str()), G_VARIANT_TYPE("(b)"),
                                  G_DBUS_CALL_FLAGS_NONE, patience, nullptr, nullptr));
  gboolean isOwned = FALSE;
  if (reply)
    g_variant_get(reply.get(), "(b)", &isOwned);
  return isOwned != FALSE;
}

std::optional<int> RunningInstance::open(const std::vector<std::string>& urls) const {
  if (urls.empty())
    return call("Activate", g_variant_new("(@a{sv})", platformData()));
  return call("Open", g_variant_new("(@as@a{sv})", texts(urls), platformData()));
}

std::optional<int> RunningInstance::activateAction(const std::string& name) const {
  return call("ActivateAction",
              g_variant_new("(s@av@a{sv})", name.c_str(),
                            g_variant_new_array(G_VARIANT_TYPE_VARIANT, nullptr, 0), platformData()));
}

std::optional<int> RunningInstance::call(const char* method, GVariant* arguments) const {
  const glib::Owned<GVariant> sunk(g_variant_ref_sink(arguments));
  const auto bus = glib::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  if (!bus)
    return std::nullopt;
  glib::Error error;
  const glib::Owned<GVariant> reply(g_dbus_connection_call_sync(
      bus.get(), id_.c_str(), objectPath(id_).c_str(), "org.freedesktop.Application", method, sunk.get(),
      nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START, patience, nullptr, error.out()));
  if (reply)
    return EXIT_SUCCESS;
  if (error.matches(G_IO_ERROR, G_IO_ERROR_TIMED_OUT)) {
    logger.notice("The running program is busy, and takes this up when it answers again");
    return EXIT_SUCCESS;
  }
  // No reply: it has ended over the question.
  for (const int code : {G_DBUS_ERROR_SERVICE_UNKNOWN, G_DBUS_ERROR_NAME_HAS_NO_OWNER, G_DBUS_ERROR_NO_REPLY})
    if (error.matches(G_DBUS_ERROR, code))
      return std::nullopt;
  logger.error("The running program can't be reached: {}", error.message());
  return EXIT_FAILURE;
}

void giveUpName(const std::string& applicationId) {
  const auto bus = glib::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  if (!bus)
    return;
  const glib::Owned<GVariant> reply(
      g_dbus_connection_call_sync(bus.get(), "org.freedesktop.DBus", "/", "org.freedesktop.DBus",
                                  "ReleaseName", g_variant_new("(s)", applicationId.c_str()), nullptr,
                                  G_DBUS_CALL_FLAGS_NONE, patience, nullptr, nullptr));
}

} // namespace ondrel::platform::desktop
