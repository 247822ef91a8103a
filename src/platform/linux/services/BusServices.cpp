#define G_SETTINGS_ENABLE_BACKEND // the name of the header's own switch

#include "platform/linux/services/BusServices.h"

#include "async/Deadline.h"

#include <gio/gsettingsbackend.h>

#include <chrono>
#include <set>
#include <string>
#include <utility>

namespace ondrel::platform::services {

namespace {

constexpr async::Duration answerLimit = std::chrono::seconds(2);
constexpr const char* watcher = "org.kde.StatusNotifierWatcher";
constexpr std::pair<DesktopService, const char*> names[] = {
    {DesktopService::notifications, "org.freedesktop.Notifications"},
    {DesktopService::statusIcons, watcher},
    {DesktopService::portal, "org.freedesktop.portal.Desktop"},
    {DesktopService::accessibility, "org.a11y.Bus"}};

async::Task<std::set<std::string>> namesOn(glib::Ref<GDBusConnection> bus) {
  std::set<std::string> result;
  for (const char* method : {"ListNames", "ListActivatableNames"}) {
    auto call = glib::adopt(g_dbus_message_new_method_call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                           "org.freedesktop.DBus", method));
    const auto reply = co_await desktop::callBus(bus, std::move(call), answerLimit);
    auto* arguments = reply ? desktop::argumentsOf(reply->get(), "(as)") : nullptr;
    if (!arguments)
      continue;
    const glib::Owned<GVariant> texts(g_variant_get_child_value(arguments, 0));
    GVariantIter each;
    g_variant_iter_init(&each, texts.get());
    const char* text = nullptr;
    while (g_variant_iter_next(&each, "&s", &text))
      result.insert(text);
  }
  co_return result;
}

// A watcher keeps icons also where no panel shows them. One that doesn't say so has one.
async::Task<bool> hasPanel(glib::Ref<GDBusConnection> bus) {
  auto call = glib::adopt(g_dbus_message_new_method_call(watcher, "/StatusNotifierWatcher",
                                                         "org.freedesktop.DBus.Properties", "Get"));
  g_dbus_message_set_body(call.get(), g_variant_new("(ss)", watcher, "IsStatusNotifierHostRegistered"));
  const auto reply = co_await desktop::callBus(bus, std::move(call), answerLimit);
  if (!reply)
    co_return false;
  auto* arguments = desktop::argumentsOf(reply->get(), "(v)");
  if (!arguments)
    co_return true;
  const glib::Owned<GVariant> boxed(g_variant_get_child_value(arguments, 0));
  const glib::Owned<GVariant> value(g_variant_get_variant(boxed.get()));
  co_return !g_variant_is_of_type(value.get(), G_VARIANT_TYPE_BOOLEAN) || g_variant_get_boolean(value.get());
}

bool keepsSettings() {
  const auto backend = glib::adopt(g_settings_backend_get_default());
  return std::string_view(G_OBJECT_TYPE_NAME(backend.get())) != "GMemorySettingsBackend";
}

} // namespace

async::Task<std::vector<DesktopService>> BusServices::missing() {
  std::vector<DesktopService> result;
  const auto connection = co_await async::withDeadline(answerLimit, bus_());
  const auto bus = connection ? *connection : nullptr;
  std::set<std::string> present;
  if (bus)
    present = co_await namesOn(bus);
  else
    result.push_back(DesktopService::sessionBus);
  if (present.contains(watcher) && !co_await hasPanel(bus))
    present.erase(watcher);
  for (const auto& [service, name] : names)
    if (!present.contains(name))
      result.push_back(service);
  if (!keepsSettings())
    result.push_back(DesktopService::settings);
  co_return result;
}

} // namespace ondrel::platform::services
