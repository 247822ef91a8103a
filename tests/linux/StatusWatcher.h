#pragma once

#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace ondrel::support {

// The panel's side of status items, on a connection of its own to the session bus: takes registrations from
// the main loop and forgets who leaves the bus, as the real ones do.
class StatusWatcher {
 public:
  StatusWatcher() {
    glib::Error error;
    connection_ = glib::adopt(g_dbus_connection_new_for_address_sync(
        g_getenv("DBUS_SESSION_BUS_ADDRESS"),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, error.out()));
    auto* node = g_dbus_node_info_new_for_xml(
        "<node><interface name='org.kde.StatusNotifierWatcher'><method name='RegisterStatusNotifierItem'>"
        "<arg type='s' direction='in'/></method>"
        "<property name='IsStatusNotifierHostRegistered' type='b' access='read'/></interface></node>",
        nullptr);
    static constexpr GDBusInterfaceVTable table = {takeCall, property, nullptr, {}};
    g_dbus_connection_register_object(connection_.get(), "/StatusNotifierWatcher", node->interfaces[0],
                                      &table, this, nullptr, nullptr);
    g_dbus_node_info_unref(node);
    call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "RequestName",
         g_variant_new("(su)", "org.kde.StatusNotifierWatcher", 4));
  }
  StatusWatcher(const StatusWatcher&) = delete;
  StatusWatcher& operator=(const StatusWatcher&) = delete;
  ~StatusWatcher() { g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr); }

  // The last item that has registered and is still on the bus; an empty name for none.
  std::string item() const {
    if (registered.empty())
      return {};
    const auto owned = call("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "NameHasOwner",
                            g_variant_new("(s)", registered.back().c_str()));
    return owned == "(true,)" ? registered.back() : "";
  }
  // Without waiting for the answer, which needs the main loop.
  void send(const char* path, const char* interface, const char* method, GVariant* arguments,
            std::function<void(std::string answer)> answered = {}) const {
    g_dbus_connection_call(
        connection_.get(), registered.back().c_str(), path, interface, method, arguments, nullptr,
        G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
        [](GObject* connection, GAsyncResult* result, gpointer data) {
          const std::unique_ptr<std::function<void(std::string)>> handler(
              static_cast<std::function<void(std::string)>*>(data));
          glib::Error error;
          const glib::Owned<GVariant> reply(
              g_dbus_connection_call_finish(G_DBUS_CONNECTION(connection), result, error.out()));
          if (*handler)
            (*handler)(reply ? glib::CString(g_variant_print(reply.get(), FALSE)).get() : error.message());
        },
        new std::function<void(std::string)>(std::move(answered)));
  }

  std::vector<std::string> registered;
  bool hasHost = true; // a panel that shows the items

 private:
  static GVariant* property(GDBusConnection*, const char*, const char*, const char*, const char*, GError**,
                            gpointer self) {
    return g_variant_new_boolean(static_cast<StatusWatcher*>(self)->hasHost);
  }
  static void takeCall(GDBusConnection*, const char*, const char*, const char*, const char*,
                       GVariant* arguments, GDBusMethodInvocation* invocation, gpointer self) {
    const char* name = nullptr;
    g_variant_get(arguments, "(&s)", &name);
    static_cast<StatusWatcher*>(self)->registered.emplace_back(name);
    g_dbus_method_invocation_return_value(invocation, nullptr);
  }
  std::string call(const char* name, const char* path, const char* interface, const char* method,
                   GVariant* arguments) const {
    const glib::Owned<GVariant> reply(
        g_dbus_connection_call_sync(connection_.get(), name, path, interface, method, arguments, nullptr,
                                    G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
    return reply ? glib::CString(g_variant_print(reply.get(), FALSE)).get() : "";
  }

  glib::Ref<GDBusConnection> connection_;
};

} // namespace ondrel::support
