#include "platform/linux/desktop/AccessibilityBus.h"

#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

#include <string_view>

namespace ondrel::platform::desktop {

namespace {

constexpr std::string_view service = "org.a11y.Bus";

bool listed(GDBusConnection* bus, const char* method) {
  const glib::Owned<GVariant> reply(g_dbus_connection_call_sync(
      bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method, nullptr,
      G_VARIANT_TYPE("(as)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
  if (!reply)
    return false;
  const glib::Owned<GVariant> names(g_variant_get_child_value(reply.get(), 0));
  for (gsize i = 0; i < g_variant_n_children(names.get()); ++i) {
    const glib::Owned<GVariant> name(g_variant_get_child_value(names.get(), i));
    if (g_variant_get_string(name.get(), nullptr) == service)
      return true;
  }
  return false;
}

} // namespace

void checkAccessibilityBus() {
  const auto bus = glib::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  if (!bus || (!listed(bus.get(), "ListActivatableNames") && !listed(bus.get(), "ListNames")))
    g_setenv("GTK_A11Y", "none", FALSE);
}

} // namespace ondrel::platform::desktop
