// Usage: services_probe [SERVICE...] -- COMMAND [argument...]
//
// Runs the command in a desktop that has these services and no others: bus, notifications, panel, portal,
// accessibility, settings. Without "bus" there is none at all.
#include "PortalStandIn.h"
#include "StatusWatcher.h"
#include "support/NotificationServer.h"
#include "support/TestBus.h"

#include <memory>
#include <optional>
#include <set>

using namespace ondrel;

int main(int count, char** values) {
  std::set<std::string> services;
  int next = 1;
  for (; next < count && std::string(values[next]) != "--"; ++next)
    services.insert(values[next]);
  if (next + 1 >= count)
    return 2;

  const support::TestBus bus;
  std::unique_ptr<support::NotificationServer> notifications;
  std::optional<support::PortalStandIn> portal;
  std::unique_ptr<support::StatusWatcher> panel;
  g_setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), TRUE);
  if (services.contains("notifications"))
    notifications = std::make_unique<support::NotificationServer>(bus.address());
  if (services.contains("panel"))
    panel = std::make_unique<support::StatusWatcher>();
  if (services.contains("portal"))
    portal.emplace(bus);
  if (services.contains("accessibility"))
    bus.addService("org.a11y.Bus", "/usr/libexec/at-spi-bus-launcher");
  if (services.contains("settings"))
    bus.addService("ca.desrt.dconf", "/usr/libexec/dconf-service");
  if (!services.contains("bus"))
    g_setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus", TRUE);

  glib::Error error;
  const auto command =
      glib::adopt(g_subprocess_newv(values + next + 1, G_SUBPROCESS_FLAGS_NONE, error.out()));
  if (!command) {
    g_printerr("%s\n", error.message());
    return 2;
  }
  bool ended = false;
  g_subprocess_wait_async(
      command.get(), nullptr,
      [](GObject*, GAsyncResult*, gpointer data) { *static_cast<bool*>(data) = true; }, &ended);
  while (!ended)
    g_main_context_iteration(nullptr, TRUE);
  return g_subprocess_get_if_exited(command.get()) ? g_subprocess_get_exit_status(command.get()) : 1;
}
