#include "platform/linux/notifications/LastingNotifications.h"

#include "base/Log.h"
#include "base/Text.h"

#include <utility>

namespace ondrel::platform::notifications {

namespace {

constexpr base::Logger logger("system");

constexpr const char* serverName = "org.gtk.Notifications";
constexpr const char* serverPath = "/org/gtk/Notifications";
// Identifier, category, action, user info.
constexpr const char* answerType = "(sssa{ss})";
// An answer with its seal.
constexpr const char* targetType = "((sssa{ss})s)";

void addText(GVariantBuilder* entries, const char* key, const std::string& text) {
  g_variant_builder_add(entries, "{sv}", key, g_variant_new_string(text.c_str()));
}

// Floating. The same one for the same answer, whatever order its entries came in.
GVariant* plainAnswer(const NotificationResponse& response) {
  const auto& [identifier, content] = response.request;
  GVariantBuilder userInfo;
  g_variant_builder_init(&userInfo, G_VARIANT_TYPE("a{ss}"));
  for (const auto& [key, value] : content.userInfo)
    g_variant_builder_add(&userInfo, "{ss}", key.c_str(), value.c_str());
  return g_variant_new(answerType, identifier.c_str(), content.categoryIdentifier.c_str(),
                       response.actionIdentifier.c_str(), &userInfo);
}

std::string_view bytesOf(GVariant* value) {
  return {static_cast<const char*>(g_variant_get_data(value)), g_variant_get_size(value)};
}

} // namespace

LastingNotifications::LastingNotifications(std::string applicationId, const Options& options,
                                           std::function<void(const NotificationResponse&)> answered)
    : applicationId_(std::move(applicationId)), actions_(options.actions), activate_(options.activate),
      answered_(std::move(answered)), seal_(options.defaults, options.sealKey) {
  const auto action = glib::adopt(g_simple_action_new(answerAction, G_VARIANT_TYPE(targetType)));
  activations_ = glib::connect<void(GSimpleAction*, GVariant*)>(
      action.get(), "activate", [this](GSimpleAction*, GVariant* target) { received(target); });
  g_action_map_add_action(actions_, G_ACTION(action.get()));
}

LastingNotifications::~LastingNotifications() {
  g_action_map_remove_action(actions_, answerAction);
}

GVariant* LastingNotifications::targetOf(const NotificationResponse& response) const {
  auto* answer = plainAnswer(response);
  const auto seal = seal_.of(bytesOf(answer));
  return g_variant_new("(@(sssa{ss})s)", answer, seal.c_str());
}

void LastingNotifications::show(const glib::Ref<GDBusConnection>& connection,
                                const NotificationRequest& request,
                                const std::vector<NotificationAction>& actions) const {
  const std::string actionName = std::string("app.") + answerAction;
  GVariantBuilder notification, buttons;
  g_variant_builder_init(&notification, G_VARIANT_TYPE_VARDICT);
  g_variant_builder_init(&buttons, G_VARIANT_TYPE("aa{sv}"));
  addText(&notification, "title", request.content.title);
  addText(&notification, "body", request.content.wholeBody());
  addText(&notification, "priority", "low"); // most likely the user has been told of it
  for (const auto& action : actions) {
    auto* target = targetOf({action.identifier, request});
    if (action.identifier == NotificationResponse::defaultAction) {
      addText(&notification, "default-action", actionName);
      g_variant_builder_add(&notification, "{sv}", "default-action-target", target);
      continue;
    }
    g_variant_builder_open(&buttons, G_VARIANT_TYPE_VARDICT);
    addText(&buttons, "label", base::displayLine(action.title));
    addText(&buttons, "action", actionName);
    g_variant_builder_add(&buttons, "{sv}", "target", target);
    g_variant_builder_close(&buttons);
  }
  g_variant_builder_add(&notification, "{sv}", "buttons", g_variant_builder_end(&buttons));
  const auto call =
      glib::adopt(g_dbus_message_new_method_call(serverName, serverPath, serverName, "AddNotification"));
  g_dbus_message_set_body(call.get(), g_variant_new("(ssa{sv})", applicationId_.c_str(),
                                                    request.identifier.c_str(), &notification));
  desktop::tellBus(connection, call);
}

std::optional<NotificationResponse> LastingNotifications::understood(GVariant* target) const {
  if (g_variant_get_size(target) > largestAnswer)
    return std::nullopt;
  const char *identifier = nullptr, *category = nullptr, *action = nullptr, *seal = nullptr;
  const char *key = nullptr, *value = nullptr;
  GVariantIter* userInfo = nullptr;
  g_variant_get(target, "((&s&s&sa{ss})&s)", &identifier, &category, &action, &userInfo, &seal);
  NotificationResponse response{
      .actionIdentifier = action,
      .request = {identifier, {.title = {}, .body = {}, .categoryIdentifier = category, .userInfo = {}}}};
  while (g_variant_iter_next(userInfo, "{&s&s}", &key, &value))
    response.request.content.userInfo.emplace(key, value);
  g_variant_iter_free(userInfo);
  const glib::Owned<GVariant> answer(g_variant_ref_sink(plainAnswer(response)));
  return seal_.fits(bytesOf(answer.get()), seal) ? std::optional(std::move(response)) : std::nullopt;
}

void LastingNotifications::received(GVariant* target) {
  const auto response = understood(target);
  if (!response) {
    logger.notice("An answer to a notification isn't one of this program's");
    activate_();
    return;
  }
  answered_(*response);
}

} // namespace ondrel::platform::notifications
