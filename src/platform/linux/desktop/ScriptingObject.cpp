#include "platform/linux/desktop/ScriptingObject.h"

#include "base/Log.h"
#include "platform/linux/text/SafeText.h"

#include <chrono>

namespace ondrel::platform::desktop {

namespace {

constexpr base::Logger logger("system");

constexpr const char* description =
    "<node><interface name='org.velmora.Ondrel.Scripting'>"
    "<method name='GetAddress'><arg type='s' name='address' direction='out'/></method>"
    "</interface></node>";
constexpr const char* errorName = "org.velmora.Ondrel.Scripting.Error.Failed";
// The bus itself answers, so it comes soon or never.
constexpr std::chrono::seconds busLimit{5};

GDBusInterfaceInfo* interfaceInfo() {
  static GDBusNodeInfo* const node = g_dbus_node_info_new_for_xml(description, nullptr);
  return node->interfaces[0];
}

// What answers a call takes the reference to it over.
void answer(glib::Ref<GDBusMethodInvocation> call, const ScriptCommandResult& result) {
  if (result)
    g_dbus_method_invocation_return_value(call.release(),
                                          g_variant_new("(s)", text::validUtf8(*result).c_str()));
  else
    g_dbus_method_invocation_return_dbus_error(call.release(), errorName,
                                               text::validUtf8(result.error().text).c_str());
}

// The bus has looked at name and arguments: there is one method, and it has none.
void called(GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*,
            GDBusMethodInvocation* invocation, gpointer handler) {
  ScriptCommandReply reply([call = glib::adopt(invocation)](
                               ScriptCommandResult result) mutable { answer(std::move(call), result); },
                           "");
  if (const auto& take = *static_cast<Scripting::Handler*>(handler))
    take(std::move(reply));
}

constexpr GDBusInterfaceVTable calls = {called, nullptr, nullptr, {}};

} // namespace

ScriptingObject::ScriptingObject(std::string applicationId, BusConnector bus)
    : applicationId_(std::move(applicationId)) {
  scope_.spawn(connect(std::move(bus)));
}

ScriptingObject::~ScriptingObject() {
  if (registration_ != 0)
    g_dbus_connection_unregister_object(connection_.get(), registration_);
}

async::Task<void> ScriptingObject::connect(BusConnector bus) {
  connection_ = co_await bus();
  if (!connection_)
    co_return;
  glib::Error error;
  registration_ = g_dbus_connection_register_object(connection_.get(), objectPath(applicationId_).c_str(),
                                                    interfaceInfo(), &calls, &handler_, nullptr, error.out());
  if (registration_ == 0)
    logger.error("Other programs can't ask for the address of a message: {}", error.message());
}

async::Task<bool> ScriptingObject::isRunning(std::string applicationId) {
  if (!connection_)
    co_return false;
  auto question = glib::adopt(g_dbus_message_new_method_call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                             "org.freedesktop.DBus", "NameHasOwner"));
  g_dbus_message_set_body(question.get(), g_variant_new("(s)", applicationId.c_str()));
  const auto reply = co_await callBus(connection_, std::move(question), busLimit);
  auto* arguments = reply && !isError(*reply) ? argumentsOf(reply->get(), "(b)") : nullptr;
  gboolean isOwned = FALSE;
  if (arguments)
    g_variant_get(arguments, "(b)", &isOwned);
  co_return isOwned != FALSE;
}

} // namespace ondrel::platform::desktop
