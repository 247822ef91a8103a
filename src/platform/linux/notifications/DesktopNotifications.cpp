#include "platform/linux/notifications/DesktopNotifications.h"

#include "async/Deadline.h"
#include "base/Log.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "platform/linux/text/SafeText.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>

namespace ondrel::platform::notifications {

namespace {

constexpr base::Logger logger("system");

constexpr const char* notificationsName = "org.freedesktop.Notifications";
constexpr const char* notificationsPath = "/org/freedesktop/Notifications";
constexpr const char* busName = "org.freedesktop.DBus";
constexpr const char* noAnswer = "The notification server doesn't answer";
// Links and images in a body are markup too: dunst without a configuration names one of these alone.
constexpr std::string_view markupCapabilities[] = {"body-markup", "body-hyperlinks", "body-images"};
constexpr std::string_view actionsCapability = "actions";

constexpr std::size_t longestLookedAt = 64 * 1024; // bytes of a text that strangers have written
constexpr guint8 urgencyNormal = 1;
constexpr gint32 expiresAsTheServerLikes = -1;

// A server may be started for the call, which takes as long as it takes.
constexpr async::Duration capabilitiesLimit = std::chrono::minutes(1);
constexpr async::Duration notifyLimit = std::chrono::minutes(5);

glib::Ref<GDBusMessage> methodCall(const char* receiver, const char* method, GVariant* arguments) {
  auto call =
      glib::adopt(g_dbus_message_new_method_call(receiver, notificationsPath, notificationsName, method));
  if (arguments)
    g_dbus_message_set_body(call.get(), arguments);
  return call;
}

glib::Ref<GDBusMessage> callOfTheBusItself(const char* method, GVariant* arguments) {
  auto call = glib::adopt(g_dbus_message_new_method_call(busName, "/org/freedesktop/DBus", busName, method));
  if (arguments)
    g_dbus_message_set_body(call.get(), arguments);
  return call;
}

bool holds(GVariant* texts, std::string_view wanted) {
  GVariantIter iterator;
  g_variant_iter_init(&iterator, texts);
  const char* text = nullptr;
  while (g_variant_iter_next(&iterator, "&s", &text))
    if (text == wanted)
      return true;
  return false;
}

// The reply's one argument of type "as".
bool holds(const glib::Ref<GDBusMessage>& reply, std::string_view wanted) {
  auto* arguments = desktop::argumentsOf(reply.get(), "(as)");
  if (!arguments)
    return false;
  const glib::Owned<GVariant> texts(g_variant_get_child_value(arguments, 0));
  return holds(texts.get(), wanted);
}

std::string line(std::string_view text, std::size_t longest) {
  return text::boundedUtf8(base::displayLine(text.substr(0, longestLookedAt)), longest);
}

NotificationContent bounded(NotificationContent content) {
  content.title = line(content.title, DesktopNotifications::longestTitle);
  content.body = line(content.body, DesktopNotifications::longestBody);
  for (auto& further : content.furtherLines)
    further = line(further, DesktopNotifications::longestBody);
  return content;
}

bool isFromTheBus(const glib::Ref<GDBusMessage>& reply) {
  const char* sender = g_dbus_message_get_sender(reply.get());
  return !sender || std::strcmp(sender, busName) == 0;
}

bool saysNobodyIsThere(const glib::Ref<GDBusMessage>& reply) {
  const char* name = g_dbus_message_get_error_name(reply.get());
  return desktop::isError(reply) && isFromTheBus(reply) && name &&
         (std::strcmp(name, "org.freedesktop.DBus.Error.ServiceUnknown") == 0 ||
          std::strcmp(name, "org.freedesktop.DBus.Error.NameHasNoOwner") == 0);
}

template <class T>
async::Task<std::optional<T>> whenReady(async::Future<T> future) {
  co_return co_await std::move(future);
}

} // namespace

DesktopNotifications::DesktopNotifications(Options options) : options_(std::move(options)) {
  if (options_.lasting)
    lasting_.emplace(options_.applicationId, *options_.lasting, [this](const NotificationResponse& response) {
      if (delegate_)
        delegate_->didReceive(response);
    });
}

void DesktopNotifications::setCategories(std::vector<NotificationCategory> categories) {
  categories_ = std::move(categories);
}

async::Task<glib::Ref<GDBusConnection>> DesktopNotifications::connected() {
  if (connection_)
    co_return connection_;
  auto connection = co_await async::withDeadline(answerLimit, options_.bus());
  if (connection && *connection && !connection_) {
    connection_ = std::move(*connection);
    nameWatch_ = desktop::BusNameWatch(connection_, notificationsName,
                                       [this](const std::string& owner) { serverChanged(owner); });
    signals_ = desktop::BusSubscription(connection_, notificationsName, nullptr, notificationsPath,
                                        [this](const std::string& sender, const std::string& member,
                                               GVariant* arguments) { received(sender, member, arguments); });
  }
  co_return connection_;
}

void DesktopNotifications::serverChanged(const std::string& owner) {
  live_->setServer(owner);
  server_.reset();
}

async::Task<std::expected<bool, std::string>> DesktopNotifications::requestAuthorization() {
  auto answer = co_await async::withDeadline(answerLimit, isAvailable());
  if (!answer)
    co_return std::unexpected("The session bus doesn't answer");
  co_return std::move(*answer);
}

async::Task<AuthorizationStatus> DesktopNotifications::authorizationStatus() {
  const auto granted = co_await requestAuthorization();
  if (!granted)
    co_return AuthorizationStatus::notDetermined;
  co_return *granted ? AuthorizationStatus::authorized : AuthorizationStatus::denied;
}

async::Task<std::expected<bool, std::string>> DesktopNotifications::isAvailable() {
  const auto connection = co_await connected();
  if (!connection)
    co_return false;
  for (const char* method : {"ListNames", "ListActivatableNames"}) {
    auto reply = co_await desktop::callBus(connection, callOfTheBusItself(method, nullptr), answerLimit);
    if (!reply)
      co_return std::unexpected(std::move(reply.error()));
    if (desktop::isError(*reply))
      co_return std::unexpected(desktop::errorText(*reply));
    if (holds(*reply, notificationsName))
      co_return true;
  }
  co_return false;
}

async::Task<std::expected<void, std::string>> DesktopNotifications::add(NotificationRequest request) {
  auto [resolver, result] = async::makeFuture<Result>();
  // In a scope of its own: it goes on when nobody waits any more.
  scope_.spawn(deliver(std::move(request), std::move(resolver)));
  auto answer = co_await async::withDeadline(answerLimit, whenReady(std::move(result)));
  if (!answer || !*answer)
    co_return std::unexpected(noAnswer);
  co_return std::move(**answer);
}

async::Task<void> DesktopNotifications::deliver(NotificationRequest request,
                                                async::Resolver<Result> resolver) {
  request.content = bounded(std::move(request.content));
  const auto identifier = request.identifier;
  onTheirWay_.insert_or_assign(identifier, request);
  auto result = co_await show(std::move(request));
  onTheirWay_.erase(identifier);
  resolver.resolve(std::move(result));
  if (unwantedThere_.erase(identifier) > 0)
    withdraw(identifier);
}

void DesktopNotifications::withdraw(const std::string& identifier) {
  if (const auto id = live_->remove(identifier))
    scope_.spawn(close(live_->server(), *id));
  else if (onTheirWay_.contains(identifier))
    unwantedThere_.insert(identifier);
}

// The application's end sends what is still to be sent.
void DesktopNotifications::handOver() {
  if (!connection_)
    return;
  for (const auto& [identifier, request] : onTheirWay_)
    // Where the answer comes before the end after all, it is closed like the others.
    if (unwantedThere_.insert(identifier).second)
      showLasting(request);
  for (const auto& entry : live_->takeAll()) {
    showLasting(entry.request);
    const auto call =
        methodCall(live_->server().c_str(), "CloseNotification", g_variant_new("(u)", entry.id));
    desktop::tellBus(connection_, call);
  }
}

void DesktopNotifications::showLasting(const NotificationRequest& request) const {
  const auto* category = categoryOf(request.content);
  if (lasting_ && category && category->outlivesProgram)
    lasting_->show(connection_, request, actionsOf(request.content));
}

async::Task<void> DesktopNotifications::close(std::string server, std::uint32_t id) {
  auto call = methodCall(server.c_str(), "CloseNotification", g_variant_new("(u)", id));
  const auto reply = co_await desktop::callBus(connection_, std::move(call), notifyLimit);
  if (!reply || desktop::isError(*reply)) // it may have been closed meanwhile
    logger.info("A notification could not be taken back: {}",
                reply ? desktop::errorText(*reply) : reply.error());
}

async::Task<DesktopNotifications::Result> DesktopNotifications::show(NotificationRequest request) {
  const auto connection = co_await connected();
  if (!connection)
    co_return std::unexpected("There is no session bus");

  constexpr int attempts = 2; // the server may restart between the question and the notification
  for (int attempt = 1;; ++attempt) {
    auto server = co_await askServer(connection);
    if (!server)
      co_return std::unexpected(std::move(server.error()));
    if (attempt == 1 && delegate_)
      delegate_->willPresent(request);
    auto reply = co_await notify(connection, std::move(*server), request);
    if (!reply)
      co_return std::unexpected(std::move(reply.error()));
    if (saysNobodyIsThere(*reply) && attempt < attempts) {
      server_.reset();
      continue;
    }
    if (desktop::isError(*reply))
      co_return std::unexpected(desktop::errorText(*reply));
    if (!desktop::argumentsOf(reply->get(), "(u)"))
      co_return std::unexpected("The notification server's answer is of a wrong type");
    co_return {};
  }
}

async::Task<std::expected<DesktopNotifications::Server, std::string>>
DesktopNotifications::askServer(glib::Ref<GDBusConnection> connection) {
  if (server_)
    co_return *server_;
  auto reply = co_await desktop::callBus(
      connection, methodCall(notificationsName, "GetCapabilities", nullptr), capabilitiesLimit);
  if (!reply)
    co_return std::unexpected(std::move(reply.error()));
  if (isFromTheBus(*reply))
    co_return std::unexpected(desktop::errorText(*reply));
  Server server{.name = g_dbus_message_get_sender(reply->get()),
                .bodyMarkup =
                    std::ranges::any_of(markupCapabilities, [&](auto each) { return holds(*reply, each); }),
                .actions = holds(*reply, actionsCapability)};
  if (desktop::isError(*reply) || !desktop::argumentsOf(reply->get(), "(as)"))
    logger.notice("The notification server doesn't tell what it can do");
  else if (server.name == live_->server())
    server_ = server;
  co_return server;
}

const NotificationCategory* DesktopNotifications::categoryOf(const NotificationContent& content) const {
  const auto found =
      std::ranges::find(categories_, content.categoryIdentifier, &NotificationCategory::identifier);
  return found == categories_.end() ? nullptr : &*found;
}

std::vector<NotificationAction> DesktopNotifications::actionsOf(const NotificationContent& content) const {
  std::vector<NotificationAction> actions{
      // TRANSLATORS: a button of a notification
      {std::string(NotificationResponse::defaultAction), base::tr("Open"), false}};
  const auto* category = categoryOf(content);
  if (!category)
    return actions;
  for (const bool destructive : {false, true})
    std::ranges::copy_if(category->actions, std::back_inserter(actions),
                         [destructive](const auto& action) { return action.destructive == destructive; });
  return actions;
}

async::Task<desktop::BusAnswer> DesktopNotifications::notify(glib::Ref<GDBusConnection> connection,
                                                             Server server, NotificationRequest request) {
  const auto& content = request.content;
  std::vector<std::string> offered;
  GVariantBuilder actions;
  g_variant_builder_init(&actions, G_VARIANT_TYPE_STRING_ARRAY);
  if (server.actions) {
    for (const auto& action : actionsOf(content)) {
      g_variant_builder_add(&actions, "s", action.identifier.c_str());
      g_variant_builder_add(&actions, "s", base::displayLine(action.title).c_str());
      offered.push_back(action.identifier);
    }
  }
  GVariantBuilder hints;
  g_variant_builder_init(&hints, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_add(&hints, "{sv}", "desktop-entry",
                        g_variant_new_string(options_.applicationId.c_str()));
  g_variant_builder_add(&hints, "{sv}", "category", g_variant_new_string("email.arrived"));
  g_variant_builder_add(&hints, "{sv}", "sound-name", g_variant_new_string("message-new-email"));
  g_variant_builder_add(&hints, "{sv}", "urgency", g_variant_new_byte(urgencyNormal));
  constexpr guint32 replacesNone = 0;
  auto body = content.wholeBody();
  if (server.bodyMarkup)
    body = base::escapedMarkup(body);
  auto* arguments = g_variant_new("(susssasa{sv}i)", options_.applicationName.c_str(), replacesNone,
                                  options_.iconName.c_str(), content.title.c_str(), body.c_str(), &actions,
                                  &hints, expiresAsTheServerLikes);

  // Right when the answer is here, since the click may be in the very next message.
  auto record = [live = std::weak_ptr(live_), request = std::move(request),
                 offered = std::move(offered)](GDBusMessage* reply) mutable {
    const auto notifications = live.lock();
    auto* answer = desktop::argumentsOf(reply, "(u)");
    if (!notifications || !answer)
      return;
    guint32 id = 0;
    g_variant_get(answer, "(u)", &id);
    notifications->add(
        g_dbus_message_get_sender(reply),
        {.id = id, .request = std::move(request), .actions = std::move(offered), .activationToken = ""});
  };
  co_return co_await desktop::callBus(connection, methodCall(server.name.c_str(), "Notify", arguments),
                                      notifyLimit, std::move(record));
}

void DesktopNotifications::received(const std::string& sender, const std::string& member,
                                    GVariant* arguments) {
  const auto are = [arguments](const char* type) {
    return g_variant_is_of_type(arguments, G_VARIANT_TYPE(type)) != FALSE;
  };
  guint32 id = 0;
  if (member == "NotificationClosed" && are("(uu)")) {
    g_variant_get(arguments, "(uu)", &id, nullptr);
    live_->remove(sender, id);
  } else if (member == "ActivationToken" && are("(us)")) {
    const char* token = nullptr;
    g_variant_get(arguments, "(u&s)", &id, &token);
    live_->setActivationToken(sender, id, token);
  } else if (member == "ActionInvoked" && are("(us)")) {
    const char* action = nullptr;
    g_variant_get(arguments, "(u&s)", &id, &action);
    invoked(sender, id, action);
  }
}

void DesktopNotifications::invoked(const std::string& sender, std::uint32_t id, const std::string& action) {
  auto notification = live_->take(sender, id, action);
  if (!notification || !delegate_)
    return;
  if (!notification->activationToken.empty() && options_.useActivationToken)
    options_.useActivationToken(notification->activationToken);
  delegate_->didReceive({.actionIdentifier = action, .request = std::move(notification->request)});
}

} // namespace ondrel::platform::notifications
