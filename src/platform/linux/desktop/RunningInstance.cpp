#include "platform/linux/desktop/RunningInstance.h"

#include "base/Log.h"
#include "base/Text.h"
#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

#include <algorithm>

namespace ondrel::platform::desktop {

namespace {

constexpr base::Logger logger("system");

glib::Ref<GDBusConnection> sessionBus() {
  return glib::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
}

// "org.velmora.Ondrel" has its object at "/org/velmora/Ondrel".
std::string objectPath(const std::string& id) {
  auto path = "/" + id;
  std::ranges::replace(path, '.', '/');
  std::ranges::replace(path, '-', '_');
  return path;
}

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

bool RunningInstance::exists() const {
  const auto bus = sessionBus();
  if (!bus)
    return false;
  const glib::Owned<GVariant> reply(
      g_dbus_connection_call_sync(bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                  "org.freedesktop.DBus", "NameHasOwner", g_variant_new("(s)", id_.c_str()),
                                  G_VARIANT_TYPE("(b)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  gboolean owned = FALSE;
  if (reply)
    g_variant_get(reply.get(), "(b)", &owned);
  return owned != FALSE;
}

bool RunningInstance::open(const std::vector<std::string>& urls) const {
  const auto bus = sessionBus();
  glib::Error error;
  bool sent = false;
  if (bus) {
    auto* arguments = urls.empty() ? g_variant_new("(@a{sv})", platformData())
                                   : g_variant_new("(@as@a{sv})", texts(urls), platformData());
    g_dbus_connection_call(bus.get(), id_.c_str(), objectPath(id_).c_str(), "org.freedesktop.Application",
                           urls.empty() ? "Activate" : "Open", arguments, nullptr,
                           G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr, nullptr, nullptr);
    sent = g_dbus_connection_flush_sync(bus.get(), nullptr, error.out()) != FALSE;
  }
  if (!sent)
    logger.error("The running program can't be reached: {}", error.message());
  return sent;
}

} // namespace ondrel::platform::desktop
