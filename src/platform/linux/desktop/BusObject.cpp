#include "platform/linux/desktop/BusObject.h"

#include "base/Log.h"

#include <memory>
#include <utility>

namespace ondrel::platform::desktop {

namespace {

constexpr base::Logger logger("system");

using Handlers = BusObject::Handlers;

// Kept alive during the call, since a handler may end what owns it.
std::shared_ptr<Handlers> keep(gpointer data) {
  return *static_cast<std::shared_ptr<Handlers>*>(data);
}

void handleCall(GDBusConnection*, const char*, const char*, const char*, const char* method,
                GVariant* arguments, GDBusMethodInvocation* invocation, gpointer data) {
  const auto handlers = keep(data);
  const glib::Owned<GVariant> kept(g_variant_ref(arguments)); // the invocation goes with its answer
  const std::string name = method;
  g_dbus_method_invocation_return_value(invocation, nullptr);
  handlers->call(name, kept.get());
}

GVariant* handleRead(GDBusConnection*, const char*, const char*, const char*, const char* property, GError**,
                     gpointer data) {
  return keep(data)->property(property);
}

constexpr GDBusInterfaceVTable table = {handleCall, handleRead, nullptr, {}};

} // namespace

BusObject::BusObject(glib::Ref<GDBusConnection> connection, const char* path, const char* description,
                     Handlers handlers)
    : connection_(std::move(connection)), path_(path) {
  auto* node = g_dbus_node_info_new_for_xml(description, nullptr);
  interface_ = node->interfaces[0]->name;
  glib::Error error;
  id_ = g_dbus_connection_register_object(
      connection_.get(), path, node->interfaces[0], &table,
      new std::shared_ptr<Handlers>(std::make_shared<Handlers>(std::move(handlers))),
      [](gpointer data) { delete static_cast<std::shared_ptr<Handlers>*>(data); }, error.out());
  g_dbus_node_info_unref(node);
  if (id_ == 0)
    logger.error("The object {} can't be put on the bus: {}", path, error.message());
}

BusObject& BusObject::operator=(BusObject&& other) noexcept {
  end();
  connection_ = std::move(other.connection_);
  path_ = std::move(other.path_);
  interface_ = std::move(other.interface_);
  id_ = std::exchange(other.id_, 0);
  return *this;
}

void BusObject::emitSignal(const char* name, GVariant* arguments) const {
  const glib::Owned<GVariant> sunk(arguments ? g_variant_ref_sink(arguments) : nullptr);
  if (id_ != 0)
    g_dbus_connection_emit_signal(connection_.get(), nullptr, path_.c_str(), interface_.c_str(), name,
                                  sunk.get(), nullptr);
}

void BusObject::end() {
  if (const auto id = std::exchange(id_, 0))
    g_dbus_connection_unregister_object(connection_.get(), id);
}

} // namespace ondrel::platform::desktop
