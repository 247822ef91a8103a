#pragma once

#include "platform/linux/glib/Ref.h"
#include "support/TestBus.h"

#include <gio/gio.h>

#include <map>
#include <string>
#include <vector>

namespace ondrel::support {

// PackageKit on a test's bus. Each transaction tells its properties, its packages in the plural, with their
// severity beside their kind, and its end, as the real one does with Debian's packages.
class PackageServiceStandIn {
 public:
  explicit PackageServiceStandIn(const TestBus& bus) : bus_(bus.connect()) {
    node_ = g_dbus_node_info_new_for_xml(description, nullptr);
    serve("/org/freedesktop/PackageKit", node_->interfaces[0]);
    TestBus::ownName(bus_, "org.freedesktop.PackageKit");
  }
  ~PackageServiceStandIn() {
    g_dbus_connection_close_sync(bus_.get(), nullptr, nullptr);
    g_dbus_node_info_unref(node_);
  }

  void claimItHasFinished(const glib::Ref<GDBusConnection>& stranger) const {
    g_dbus_connection_emit_signal(stranger.get(), nullptr, path(transactions_).c_str(), transaction,
                                  "Finished", g_variant_new("(uu)", 1U, 0U), nullptr);
    g_dbus_connection_flush_sync(stranger.get(), nullptr, nullptr);
  }

  struct Answer {
    const char* packages = nullptr; // of the type a(uss), as text
    unsigned error = 0;
    const char* text = "";
    bool ends = true;
    const char* refusal = nullptr; // the name of the error that the call itself gets
  };
  // By "method", or by "method flags" for what has some.
  std::map<std::string, Answer> answers = {
      {"SearchFiles", {"[(1, 'ondrel;1.0-1;amd64;manual:local', '')]"}},
      {"GetUpdates", {"[(327685, 'other;9;amd64;s', ''), (327685, 'ondrel;1.2-3;amd64;s', '')]"}}};
  std::string updateText = " == 1.2-3 ==\n * Faster & <b>\n -- Nobody <n@x>  Sun, 01 Nov 2026";
  std::vector<std::string> calls;

 private:
  static constexpr const char* transaction = "org.freedesktop.PackageKit.Transaction";
  static constexpr const char* description = R"(<node>
    <interface name='org.freedesktop.PackageKit'>
      <method name='CreateTransaction'><arg type='o' direction='out'/></method></interface>
    <interface name='org.freedesktop.PackageKit.Transaction'>
      <method name='SetHints'><arg type='as' direction='in'/></method><method name='Cancel'/>
      <method name='SearchFiles'><arg type='t' direction='in'/><arg type='as' direction='in'/></method>
      <method name='RefreshCache'><arg type='b' direction='in'/></method>
      <method name='GetUpdates'><arg type='t' direction='in'/></method>
      <method name='GetUpdateDetail'><arg type='as' direction='in'/></method>
      <method name='UpdatePackages'><arg type='t' direction='in'/><arg type='as' direction='in'/></method>
    </interface></node>)";

  static std::string path(int number) { return "/" + std::to_string(number) + "_abc"; }
  void serve(const std::string& at, GDBusInterfaceInfo* interface) {
    static const GDBusInterfaceVTable table = {called, nullptr, nullptr, {}};
    g_dbus_connection_register_object(bus_.get(), at.c_str(), interface, &table, this, nullptr, nullptr);
  }
  static void called(GDBusConnection*, const char*, const char*, const char*, const char* method,
                     GVariant* arguments, GDBusMethodInvocation* invocation, gpointer self) {
    static_cast<PackageServiceStandIn*>(self)->answer(method, arguments, invocation);
  }
  void tell(const char* member, GVariant* arguments, const char* interface = transaction) const {
    g_dbus_connection_emit_signal(bus_.get(), nullptr, path(transactions_).c_str(), interface, member,
                                  arguments, nullptr);
  }
  void tellProperty(const char* name, guint32 value) const {
    tell("PropertiesChanged", g_variant_new_parsed("(%s, {%s: <%u>}, @as [])", transaction, name, value),
         "org.freedesktop.DBus.Properties");
  }

  void answer(std::string method, GVariant* arguments, GDBusMethodInvocation* invocation) {
    if (method == "CreateTransaction") {
      serve(path(++transactions_), node_->interfaces[1]);
      g_dbus_method_invocation_return_value(invocation, g_variant_new("(o)", path(transactions_).c_str()));
      return;
    }
    if (const char* refusal = answers[method].refusal) {
      g_dbus_method_invocation_return_dbus_error(invocation, refusal, "");
      return;
    }
    g_dbus_method_invocation_return_value(invocation, nullptr);
    if (method == "SetHints")
      return;
    if (method == "UpdatePackages") {
      guint64 flags = 0;
      g_variant_get_child(arguments, 0, "t", &flags);
      method += " " + std::to_string(flags);
    }
    calls.push_back(method);
    if (method != "Cancel")
      run(answers[method], method == "GetUpdateDetail");
  }
  void run(const Answer& answer, bool hasDetail) {
    tellProperty("Percentage", 100); // of reading its lists
    tellProperty("Status", 31);      // it waits for permission
    tellProperty("Status", 8);
    tellProperty("Percentage", 40);
    if (answer.packages)
      tell("Packages", g_variant_new("(@a(uss))", g_variant_new_parsed(
                                                      ("@a(uss) " + std::string(answer.packages)).c_str())));
    if (hasDetail)
      tell("UpdateDetail",
           g_variant_new_parsed("('ondrel;1.2-3;amd64;s', @as [], @as [], @as [], @as [], @as [], @u 0, %s, "
                                "'Changelog for this version is not yet available', @u 1, '', '')",
                                updateText.c_str()));
    if (answer.error)
      tell("ErrorCode", g_variant_new("(us)", answer.error, answer.text));
    if (answer.ends)
      tell("Finished", g_variant_new("(uu)", answer.error ? 2U : 1U, 0U));
  }

  const glib::Ref<GDBusConnection> bus_;
  GDBusNodeInfo* node_;
  int transactions_ = 0;
};

} // namespace ondrel::support
