#include "platform/linux/packages/PackageTransaction.h"

#include "async/Timer.h"
#include "base/Translation.h"
#include "platform/linux/packages/TransactionSignals.h"

#include <chrono>
#include <memory>
#include <utility>

namespace ondrel::platform::packages {

namespace {

using Kind = UpdateFault::Kind;

constexpr const char* service = "org.freedesktop.PackageKit";
constexpr const char* servicePath = "/org/freedesktop/PackageKit";
constexpr const char* transactionInterface = "org.freedesktop.PackageKit.Transaction";

// The service may have to be started first.
constexpr std::chrono::seconds answerLimit{30};
// Some versions answer when the user has.
constexpr std::chrono::minutes userLimit{10};

glib::Ref<GDBusMessage> callOf(const char* path, const char* interface, const char* method,
                               GVariant* arguments) {
  auto call = glib::adopt(g_dbus_message_new_method_call(service, path, interface, method));
  if (arguments)
    g_dbus_message_set_body(call.get(), arguments);
  return call;
}

// There is no service, which is more than that it was too slow or ended meanwhile. The last ones tell of a
// unit that is masked or can't be loaded.
bool isOfMissingService(const std::string& error) {
  return error == "org.freedesktop.DBus.Error.ServiceUnknown" ||
         error == "org.freedesktop.DBus.Error.NameHasNoOwner" ||
         error.starts_with("org.freedesktop.DBus.Error.Spawn.") ||
         error.starts_with("org.freedesktop.systemd1.");
}

UpdateFault faultOf(const desktop::BusAnswer& answer) {
  if (!answer)
    return {Kind::other, answer.error()};
  const char* name = g_dbus_message_get_error_name(answer->get());
  const auto error = std::string(name ? name : "");
  const bool isRefused = error.ends_with(".RefusedByPolicy") || error.ends_with(".NotAuthorized") ||
                         error.ends_with(".AccessDenied");
  const auto kind = isRefused ? Kind::refused : isOfMissingService(error) ? Kind::noService : Kind::other;
  return {kind, desktop::errorText(*answer)};
}

// The texts of errors are in English, which is how their reason can be told. What may be asked is told too.
GVariant* hints(const TransactionCall& call) {
  const std::string background = call.inBackground ? "background=true" : "background=false";
  const std::string interactive = call.mayAsk ? "interactive=true" : "interactive=false";
  const char* texts[] = {"locale=C.UTF-8", background.c_str(), interactive.c_str(),
                         "supports-plural-signals=true", nullptr};
  return g_variant_new("(^as)", texts);
}

// Tells the service to give up, unless the transaction has come to its end.
class Cancellation {
 public:
  Cancellation(glib::Ref<GDBusConnection> connection, std::string path)
      : connection_(std::move(connection)), path_(std::move(path)) {}
  Cancellation(const Cancellation&) = delete;
  Cancellation& operator=(const Cancellation&) = delete;
  ~Cancellation() {
    if (path_.empty())
      return;
    const auto call = callOf(path_.c_str(), transactionInterface, "Cancel", nullptr);
    constexpr int withoutEffects =
        G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED | G_DBUS_MESSAGE_FLAGS_NO_AUTO_START;
    g_dbus_message_set_flags(call.get(), static_cast<GDBusMessageFlags>(withoutEffects));
    g_dbus_connection_send_message(connection_.get(), call.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr,
                                   nullptr);
  }
  void release() { path_.clear(); }

 private:
  const glib::Ref<GDBusConnection> connection_;
  std::string path_;
};

} // namespace

async::Task<TransactionOutcome> runTransaction(glib::Ref<GDBusConnection> connection, TransactionCall call) {
  const auto made = co_await desktop::callBus(
      connection, callOf(servicePath, service, "CreateTransaction", nullptr), answerLimit);
  auto* told = made && !desktop::isError(*made) ? desktop::argumentsOf(made->get(), "(o)") : nullptr;
  if (!told)
    co_return std::unexpected(faultOf(made));
  const char* objectPath = nullptr;
  g_variant_get(told, "(&o)", &objectPath);
  const std::string path = objectPath;
  const char* name = g_dbus_message_get_sender(made->get());
  const std::string owner = name ? name : "";

  auto [resolver, outcome] = async::makeFuture<TransactionOutcome>();
  const auto state = std::make_shared<TransactionSignals>(std::move(resolver), std::move(call.progress));
  // Anybody on the bus can send such signals.
  const desktop::BusSubscription ownSignals(
      connection, transactionInterface, nullptr, path.c_str(),
      [state, owner](const std::string& sender, const std::string& member, GVariant* arguments) {
        if (sender == owner)
          state->take(member, arguments);
      });
  const desktop::BusSubscription properties(
      connection, "org.freedesktop.DBus.Properties", "PropertiesChanged", path.c_str(),
      [state, owner](const std::string& sender, const std::string&, GVariant* arguments) {
        if (sender == owner)
          state->takeProperties(arguments);
      });
  const desktop::BusNameWatch watch(connection, service, [state, owner](const std::string& present) {
    if (present != owner)
      state->fail({Kind::noService, "the service has ended"});
  });
  std::optional<async::Timer> timer;
  if (call.limit)
    timer.emplace(*call.limit, [state] { state->fail({Kind::other, base::tr("it takes too long")}); });

  Cancellation cancellation(connection, path);
  // An older service knows fewer hints and takes those that it knows.
  (void)co_await desktop::callBus(
      connection, callOf(path.c_str(), transactionInterface, "SetHints", hints(call)), answerLimit);
  const auto started = co_await desktop::callBus(
      connection, callOf(path.c_str(), transactionInterface, call.method.c_str(), call.arguments.get()),
      userLimit);
  if (!started || desktop::isError(*started))
    co_return std::unexpected(faultOf(started));
  auto result = co_await std::move(outcome);
  if (!result)
    co_return std::unexpected(UpdateFault{Kind::cancelled, "called off"});
  if (state->hasFinished())
    cancellation.release();
  co_return std::move(*result);
}

} // namespace ondrel::platform::packages
