#include "platform/linux/portal/PortalRequest.h"

#include "async/Future.h"
#include "async/Timer.h"

#include <algorithm>
#include <chrono>
#include <memory>

namespace ondrel::platform::portal {

namespace {

// The portal itself answers soon or never; the user may think it over.
constexpr std::chrono::seconds portalLimit{10};
constexpr std::chrono::minutes userLimit{10};

enum Response : guint32 { granted = 0, cancelled = 1 };

struct Answer {
  std::string sender;
  guint32 response = 0;
  glib::Owned<GVariant> results;
};

// Where the answer will be told. It is known before the call, so that none is missed.
std::string requestPath(GDBusConnection* connection, const std::string& token) {
  const char* name = g_dbus_connection_get_unique_name(connection);
  std::string sender = name ? name + 1 : ""; // without the colon
  std::ranges::replace(sender, '.', '_');
  return std::string(portalPath) + "/request/" + sender + "/" + token;
}

glib::Ref<GDBusMessage> callOf(const char* interface, const char* method, GVariant* arguments) {
  auto call = glib::adopt(g_dbus_message_new_method_call(portalName, portalPath, interface, method));
  g_dbus_message_set_body(call.get(), arguments);
  return call;
}

} // namespace

std::string newToken() {
  const glib::CString id(g_uuid_string_random());
  std::string token = std::string("ondrel_") + id.get();
  std::ranges::replace(token, '-', '_');
  return token;
}

async::Task<PortalResults> requestFromPortal(glib::Ref<GDBusConnection> connection, std::string interface,
                                             std::string method,
                                             std::function<GVariant*(const std::string& token)> arguments) {
  const auto token = newToken();
  auto [resolver, future] = async::makeFuture<Answer>();
  const auto shared = std::make_shared<async::Resolver<Answer>>(std::move(resolver));
  const auto path = requestPath(connection.get(), token);
  const desktop::BusSubscription responses(
      connection, "org.freedesktop.portal.Request", "Response", path.c_str(),
      [shared](const std::string& sender, const std::string&, GVariant* told) {
        if (!g_variant_is_of_type(told, G_VARIANT_TYPE("(ua{sv})")))
          return;
        Answer answer{sender, 0, nullptr};
        GVariant* results = nullptr;
        g_variant_get(told, "(u@a{sv})", &answer.response, &results);
        answer.results.reset(results);
        shared->resolve(std::move(answer));
      });
  const auto reply = co_await desktop::callBus(
      connection, callOf(interface.c_str(), method.c_str(), arguments(token)), portalLimit);
  if (!reply)
    co_return std::unexpected(reply.error());
  if (desktop::isError(*reply))
    co_return std::unexpected(desktop::errorText(*reply));
  const char* portal = g_dbus_message_get_sender(reply->get());
  const async::Timer timer(userLimit, [shared] { shared->resolve({}); });
  auto answer = co_await std::move(future);
  if (!answer || answer->sender.empty())
    co_return std::unexpected("the portal gives no answer");
  // Anybody on the bus can send such a signal.
  if (!portal || answer->sender != portal)
    co_return std::unexpected("an answer came from elsewhere");
  if (answer->response != Response::granted)
    co_return std::unexpected(answer->response == Response::cancelled ? "cancelled" : "refused");
  co_return std::move(answer->results);
}

async::Task<unsigned> portalVersion(glib::Ref<GDBusConnection> connection, std::string interface) {
  auto call =
      callOf("org.freedesktop.DBus.Properties", "Get", g_variant_new("(ss)", interface.c_str(), "version"));
  const auto reply = co_await desktop::callBus(connection, std::move(call), portalLimit);
  auto* told = reply && !desktop::isError(*reply) ? desktop::argumentsOf(reply->get(), "(v)") : nullptr;
  if (!told)
    co_return 0;
  GVariant* value = nullptr;
  g_variant_get(told, "(v)", &value);
  const glib::Owned<GVariant> owned(value);
  co_return g_variant_is_of_type(value, G_VARIANT_TYPE_UINT32) ? g_variant_get_uint32(value) : 0U;
}

} // namespace ondrel::platform::portal
