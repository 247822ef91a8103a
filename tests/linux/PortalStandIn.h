#pragma once

#include "platform/linux/glib/Ref.h"
#include "support/TestBus.h"

#include <gio/gio.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace ondrel::support {

// The desktop's portal on a test's bus. It answers its requests by the signal of their object as the real one
// does, if told so before the reply, as some do.
class PortalStandIn {
 public:
  explicit PortalStandIn(const TestBus& bus) : bus_(bus.connect()) {
    static const GDBusInterfaceVTable table = {called, property, nullptr, {}};
    node_ = g_dbus_node_info_new_for_xml(description, nullptr);
    for (int i = 0; node_->interfaces[i]; ++i)
      g_dbus_connection_register_object(bus_.get(), "/org/freedesktop/portal/desktop", node_->interfaces[i],
                                        &table, this, nullptr, nullptr);
    TestBus::ownName(bus_, "org.freedesktop.portal.Desktop");
  }
  ~PortalStandIn() {
    g_dbus_connection_close_sync(bus_.get(), nullptr, nullptr);
    g_dbus_node_info_unref(node_);
  }

  void activate(const std::string& target, const char* name) const {
    GVariantBuilder options;
    g_variant_builder_init(&options, G_VARIANT_TYPE_VARDICT);
    g_variant_builder_add(&options, "{sv}", "activation_token", g_variant_new_string("token"));
    emit(bus_, target, name, g_variant_builder_end(&options));
  }
  static void emit(const glib::Ref<GDBusConnection>& from, const std::string& target, const char* name,
                   GVariant* options) {
    g_dbus_connection_emit_signal(
        from.get(), nullptr, "/org/freedesktop/portal/desktop", "org.freedesktop.portal.GlobalShortcuts",
        "Activated", g_variant_new("(ost@a{sv})", target.c_str(), name, guint64{1}, options), nullptr);
    g_dbus_connection_flush_sync(from.get(), nullptr, nullptr);
  }

  guint32 response = 0;
  bool answersBeforeReply = false;
  bool grantsAutostart = true;
  std::vector<std::string> calls; // methods with their arguments as text
  std::string session;            // of the last one made

 private:
  static constexpr const char* description = R"(<node>
    <interface name='org.freedesktop.portal.Background'>
      <method name='RequestBackground'><arg type='s' direction='in'/><arg type='a{sv}' direction='in'/>
        <arg type='o' direction='out'/></method>
      <method name='SetStatus'><arg type='a{sv}' direction='in'/></method>
    </interface>
    <interface name='org.freedesktop.portal.GlobalShortcuts'>
      <property name='version' type='u' access='read'/>
      <method name='CreateSession'><arg type='a{sv}' direction='in'/><arg type='o' direction='out'/></method>
      <method name='BindShortcuts'><arg type='o' direction='in'/><arg type='a(sa{sv})' direction='in'/>
        <arg type='s' direction='in'/><arg type='a{sv}' direction='in'/><arg type='o' direction='out'/></method>
    </interface></node>)";

  static GVariant* property(GDBusConnection*, const char*, const char*, const char*, const char*, GError**,
                            gpointer) {
    return g_variant_new_uint32(1);
  }
  static void called(GDBusConnection*, const char* sender, const char*, const char*, const char* method,
                     GVariant* arguments, GDBusMethodInvocation* invocation, gpointer self) {
    static_cast<PortalStandIn*>(self)->answer(sender, method, arguments, invocation);
  }

  void answer(const std::string& sender, const std::string& method, GVariant* arguments,
              GDBusMethodInvocation* invocation) {
    calls.push_back(method + " " + glib::CString(g_variant_print(arguments, FALSE)).get());
    if (method == "SetStatus") {
      g_dbus_method_invocation_return_value(invocation, nullptr);
      return;
    }
    const glib::Owned<GVariant> options(
        g_variant_get_child_value(arguments, g_variant_n_children(arguments) - 1));
    const char* token = "";
    g_variant_lookup(options.get(), "handle_token", "&s", &token);
    auto name = sender.substr(1);
    std::ranges::replace(name, '.', '_');
    const auto path = "/org/freedesktop/portal/desktop/request/" + name + "/" + token;
    const glib::Owned<GVariant> results(g_variant_ref_sink(resultsOf(method, options.get(), name)));
    const auto tell = [&] {
      g_dbus_connection_emit_signal(bus_.get(), sender.c_str(), path.c_str(),
                                    "org.freedesktop.portal.Request", "Response",
                                    g_variant_new("(u@a{sv})", response, results.get()), nullptr);
    };
    if (answersBeforeReply)
      tell();
    g_dbus_method_invocation_return_value(invocation, g_variant_new("(o)", path.c_str()));
    if (!answersBeforeReply)
      tell();
  }

  GVariant* resultsOf(const std::string& method, GVariant* options, const std::string& sender) {
    GVariantBuilder results;
    g_variant_builder_init(&results, G_VARIANT_TYPE_VARDICT);
    if (method == "RequestBackground") {
      gboolean wanted = FALSE;
      g_variant_lookup(options, "autostart", "b", &wanted);
      g_variant_builder_add(&results, "{sv}", "autostart", g_variant_new_boolean(wanted && grantsAutostart));
    } else if (method == "CreateSession") {
      const char* token = "";
      g_variant_lookup(options, "session_handle_token", "&s", &token);
      session = "/org/freedesktop/portal/desktop/session/" + sender + "/" + token;
      g_variant_builder_add(&results, "{sv}", "session_handle", g_variant_new_string(session.c_str()));
    } else {
      g_variant_builder_add(
          &results, "{sv}", "shortcuts",
          g_variant_new_parsed("[('toggle', {'trigger_description': <'Press <Meta>+M'>})]"));
    }
    return g_variant_builder_end(&results);
  }

  const glib::Ref<GDBusConnection> bus_;
  GDBusNodeInfo* node_;
};

} // namespace ondrel::support
