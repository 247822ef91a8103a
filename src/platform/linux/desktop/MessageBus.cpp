#include "platform/linux/desktop/MessageBus.h"

#include "async/Future.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "platform/linux/glib/AsyncResult.h"
#include "platform/linux/text/SafeText.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <utility>

namespace ondrel::platform::desktop {

namespace {

constexpr std::size_t longestErrorText = 300; // characters

async::Task<glib::Ref<GDBusConnection>> connectTo(GBusType bus) {
  auto [pending, result] = glib::startAsync();
  g_bus_get(bus, pending.cancellable, glib::PendingCall::callback, pending.userData);
  const auto finished = co_await std::move(result);
  if (!finished)
    co_return nullptr;
  co_return glib::adopt(g_bus_get_finish(finished->get(), nullptr));
}

struct Call {
  async::Resolver<BusAnswer> resolver;
  std::move_only_function<void(GDBusMessage*)> seen;
};

void answered(GObject* connection, GAsyncResult* result, gpointer data) {
  const std::unique_ptr<Call> call(static_cast<Call*>(data));
  glib::Error error;
  auto reply = glib::adopt(
      g_dbus_connection_send_message_with_reply_finish(G_DBUS_CONNECTION(connection), result, error.out()));
  if (!reply) {
    call->resolver.resolve(std::unexpected(std::string(error.message())));
    return;
  }
  if (call->seen)
    call->seen(reply.get());
  call->resolver.resolve(std::move(reply));
}

// The handler is kept alive during the call, since it may end what owns it.
template <class Handler>
std::shared_ptr<Handler> keep(gpointer data) {
  return *static_cast<std::shared_ptr<Handler>*>(data);
}
template <class Handler>
void destroy(gpointer data) {
  delete static_cast<std::shared_ptr<Handler>*>(data);
}
template <class Handler>
gpointer boxed(Handler handler) {
  return new std::shared_ptr<Handler>(std::make_shared<Handler>(std::move(handler)));
}

} // namespace

std::string objectPath(std::string_view applicationId) {
  auto path = "/" + std::string(applicationId);
  std::ranges::replace(path, '.', '/');
  std::ranges::replace(path, '-', '_');
  return path;
}

async::Task<glib::Ref<GDBusConnection>> sessionBus() {
  return connectTo(G_BUS_TYPE_SESSION);
}

async::Task<glib::Ref<GDBusConnection>> systemBus() {
  auto connection = co_await connectTo(G_BUS_TYPE_SYSTEM);
  if (connection)
    g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
  co_return connection;
}

async::Task<BusAnswer> callBus(glib::Ref<GDBusConnection> connection, glib::Ref<GDBusMessage> call,
                               async::Duration limit, std::move_only_function<void(GDBusMessage*)> seen) {
  auto [resolver, answer] = async::makeFuture<BusAnswer>();
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(limit).count();
  g_dbus_connection_send_message_with_reply(connection.get(), call.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE,
                                            static_cast<int>(milliseconds), nullptr, nullptr, answered,
                                            new Call{std::move(resolver), std::move(seen)});
  auto result = co_await std::move(answer);
  if (!result)
    co_return std::unexpected(std::string(base::tr("The call was given up")));
  co_return std::move(*result);
}

void tellBus(const glib::Ref<GDBusConnection>& connection, const glib::Ref<GDBusMessage>& call) {
  g_dbus_message_set_flags(call.get(), static_cast<GDBusMessageFlags>(G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED |
                                                                      G_DBUS_MESSAGE_FLAGS_NO_AUTO_START));
  g_dbus_connection_send_message(connection.get(), call.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                 nullptr);
}

bool isError(const glib::Ref<GDBusMessage>& reply) {
  return g_dbus_message_get_message_type(reply.get()) == G_DBUS_MESSAGE_TYPE_ERROR;
}

std::string errorText(const glib::Ref<GDBusMessage>& reply) {
  const char* name = g_dbus_message_get_error_name(reply.get());
  const char* text = g_dbus_message_get_arg0(reply.get());
  return text::boundedUtf8(base::displayLine(fmt::format("{}: {}", name ? name : "", text ? text : "")),
                           longestErrorText);
}

GVariant* argumentsOf(GDBusMessage* reply, const char* type) {
  auto* body = g_dbus_message_get_body(reply);
  return body && g_variant_is_of_type(body, G_VARIANT_TYPE(type)) ? body : nullptr;
}

BusSubscription::BusSubscription(glib::Ref<GDBusConnection> connection, const char* interface,
                                 const char* member, const char* path, Handler handler)
    : connection_(std::move(connection)),
      id_(g_dbus_connection_signal_subscribe(
          connection_.get(), nullptr, interface, member, path, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
          [](GDBusConnection*, const char* sender, const char*, const char*, const char* name,
             GVariant* arguments, gpointer data) {
            const auto kept = keep<Handler>(data);
            (*kept)(sender ? sender : "", name, arguments);
          },
          boxed(std::move(handler)), destroy<Handler>)) {
}

BusSubscription& BusSubscription::operator=(BusSubscription&& other) noexcept {
  end();
  connection_ = std::move(other.connection_);
  id_ = std::exchange(other.id_, 0);
  return *this;
}

void BusSubscription::end() {
  if (const auto id = std::exchange(id_, 0))
    g_dbus_connection_signal_unsubscribe(connection_.get(), id);
}

BusNameWatch::BusNameWatch(const glib::Ref<GDBusConnection>& connection, const char* name, Handler handler)
    : id_(g_bus_watch_name_on_connection(
          connection.get(), name, G_BUS_NAME_WATCHER_FLAGS_NONE,
          [](GDBusConnection*, const char*, const char* owner, gpointer data) {
            const auto kept = keep<Handler>(data);
            (*kept)(owner);
          },
          [](GDBusConnection*, const char*, gpointer data) {
            const auto kept = keep<Handler>(data);
            (*kept)("");
          },
          boxed(std::move(handler)), destroy<Handler>)) {
}

BusNameWatch& BusNameWatch::operator=(BusNameWatch&& other) noexcept {
  end();
  id_ = std::exchange(other.id_, 0);
  return *this;
}

void BusNameWatch::end() {
  if (const auto id = std::exchange(id_, 0))
    g_bus_unwatch_name(id);
}

} // namespace ondrel::platform::desktop
