// Makes an application the one that opens mail links, for programs that can't do that from inside a sandbox:
// org.velmora.Ondrel.DefaultMailHelper on the session bus, started by it, gone after a minute without calls.
// It chooses among installed applications that say they open such links, and touches nothing else.

#include "base/Translation.h"
#include "platform/linux/glib/Ref.h"

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

#include <clocale>
#include <cstdlib>
#include <string>

namespace {

using namespace ondrel;

constexpr const char* name = "org.velmora.Ondrel.DefaultMailHelper";
constexpr const char* path = "/org/velmora/Ondrel/DefaultMailHelper";
constexpr const char* description = "<node><interface name='org.velmora.Ondrel.DefaultMailHelper'>"
                                    "<method name='SetAsDefaultMailClient'>"
                                    "<arg type='s' name='bundleIdentifier' direction='in'/>"
                                    "<arg type='b' name='success' direction='out'/>"
                                    "<arg type='s' name='error' direction='out'/>"
                                    "</method></interface></node>";
constexpr const char* mailLinks = "x-scheme-handler/mailto";
constexpr guint idleSeconds = 60;

// In ../share/locale of its own folder, built or installed.
void useTranslations() {
  const glib::CString own(g_file_read_link("/proc/self/exe", nullptr));
  const glib::CString folder(own ? g_path_get_dirname(own.get()) : nullptr);
  if (folder)
    base::useTranslations(std::string(folder.get()) + "/../share/locale");
}

guint idle = 0;

bool opensMailLinks(GAppInfo* application) {
  const char** types = g_app_info_get_supported_types(application);
  for (; types && *types; ++types)
    if (g_str_equal(*types, mailLinks))
      return true;
  return false;
}

bool isDefault(const std::string& id) {
  const auto handler = glib::adopt(g_app_info_get_default_for_type(mailLinks, FALSE));
  const char* found = handler ? g_app_info_get_id(handler.get()) : nullptr;
  return found && id == found;
}

// A text for the user when it failed.
std::string setDefault(const std::string& identifier) {
  const auto id = identifier + ".desktop";
  const auto application = glib::adopt(g_desktop_app_info_new(id.c_str()));
  if (!application)
    return base::trFormat("The application is not installed where the desktop finds it ({}).", id);
  auto* info = G_APP_INFO(application.get());
  if (!opensMailLinks(info))
    return base::trFormat("The application doesn't open mail links ({}).", id);
  glib::Error error;
  if (!g_app_info_set_as_default_for_type(info, mailLinks, error.out()))
    return error.message();
  return isDefault(id) ? "" : base::tr("The desktop keeps another application.");
}

gboolean leave(gpointer loop) {
  g_main_loop_quit(static_cast<GMainLoop*>(loop));
  return G_SOURCE_REMOVE;
}

void stay(gpointer loop) {
  if (idle != 0)
    g_source_remove(idle);
  idle = g_timeout_add_seconds(idleSeconds, leave, loop);
}

void called(GDBusConnection*, const char*, const char*, const char*, const char*, GVariant* arguments,
            GDBusMethodInvocation* invocation, gpointer loop) {
  stay(loop);
  const char* identifier = nullptr;
  g_variant_get(arguments, "(&s)", &identifier);
  const auto error = setDefault(identifier);
  g_dbus_method_invocation_return_value(
      invocation, g_variant_new("(bs)", static_cast<gboolean>(error.empty()), error.c_str()));
}

constexpr GDBusInterfaceVTable table = {called, nullptr, nullptr, {}};

} // namespace

int main() {
  std::setlocale(LC_ALL, "");
  useTranslations();
  const auto bus = glib::adopt(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
  if (!bus)
    return EXIT_FAILURE;
  auto* loop = g_main_loop_new(nullptr, FALSE);
  auto* node = g_dbus_node_info_new_for_xml(description, nullptr);
  g_dbus_connection_register_object(bus.get(), path, node->interfaces[0], &table, loop, nullptr, nullptr);
  g_bus_own_name_on_connection(
      bus.get(), name, G_BUS_NAME_OWNER_FLAGS_DO_NOT_QUEUE, nullptr,
      [](GDBusConnection*, const char*, gpointer lost) { leave(lost); }, loop, nullptr);
  stay(loop);
  g_main_loop_run(loop);
  g_dbus_node_info_unref(node);
  g_main_loop_unref(loop);
  return EXIT_SUCCESS;
}
