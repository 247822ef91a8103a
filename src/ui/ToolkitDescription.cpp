#include "ui/ToolkitDescription.h"

#include "platform/linux/glib/Ref.h"

#include <adwaita.h>
#include <fmt/format.h>

#include <cstdlib>
#include <string_view>

namespace ondrel::ui {

namespace {

constexpr int portalLimit = 300; // milliseconds; the bus itself answers, which is never far

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value && *value ? value : "unknown";
}

// Whether there is somebody, or could be as soon as there is something to do.
std::string_view portal() {
  const auto bus = glib::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  if (!bus)
    return "no session bus";
  const auto asks = [&bus](const char* method) {
    const glib::Owned<GVariant> reply(g_dbus_connection_call_sync(
        bus.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method, nullptr,
        G_VARIANT_TYPE("(as)"), G_DBUS_CALL_FLAGS_NONE, portalLimit, nullptr, nullptr));
    if (!reply)
      return false;
    const glib::Owned<GVariant> names(g_variant_get_child_value(reply.get(), 0));
    const glib::Owned<char*> list(g_variant_dup_strv(names.get(), nullptr));
    return g_strv_contains(list.get(), "org.freedesktop.portal.Desktop") != FALSE;
  };
  if (asks("ListNames"))
    return "running";
  return asks("ListActivatableNames") ? "available" : "none";
}

} // namespace

std::string describeToolkit(GtkWindow* window) {
  auto* display = gdk_display_get_default();
  auto* renderer = window ? gtk_native_get_renderer(GTK_NATIVE(window)) : nullptr;
  return fmt::format("GTK: {}.{}.{}\nlibadwaita: {}.{}.{}\nDesktop: {}\nSession: {}\nDisplay: {}\n"
                     "Renderer: {}\nPortal: {}\n",
                     gtk_get_major_version(), gtk_get_minor_version(), gtk_get_micro_version(),
                     adw_get_major_version(), adw_get_minor_version(), adw_get_micro_version(),
                     environment("XDG_CURRENT_DESKTOP"), environment("XDG_SESSION_TYPE"),
                     display ? G_OBJECT_TYPE_NAME(display) : "none",
                     renderer ? G_OBJECT_TYPE_NAME(renderer) : "unknown", portal());
}

} // namespace ondrel::ui
