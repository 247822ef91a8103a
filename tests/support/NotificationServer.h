#pragma once

#include "support/TestBus.h"

#include <gio/gio.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::support {

// A server of org.freedesktop.Notifications that shows nothing, writes down what it is asked and does what a
// test tells it. It answers from a thread of GDBus: it needs no main loop, and the test may look on at any
// time.
class NotificationServer {
 public:
  enum class Behaviour {
    answer,
    refuse,  // each notification with an error
    silent,  // nothing is answered until answerHeldBack()
    garbage, // replies of wrong types
  };
  struct Notification {
    std::uint32_t id = 0; // as answered
    std::string summary;
    std::string body;
    std::vector<std::string> actions;
    std::map<std::string, std::string> hints; // values as GVariant prints them, with their types
    std::int64_t arrival = 0;                 // on CLOCK_MONOTONIC, in microseconds
  };

  // On the bus of that address. Ids go up from 1, also over restarts.
  explicit NotificationServer(std::string busAddress) : address_(std::move(busAddress)) { start(); }
  NotificationServer(const NotificationServer&) = delete;
  NotificationServer& operator=(const NotificationServer&) = delete;
  ~NotificationServer() { stop(); }

  void setCapabilities(std::vector<std::string> capabilities) {
    const std::lock_guard lock(state_->mutex);
    state_->capabilities = std::move(capabilities);
  }
  void setBehaviour(Behaviour behaviour) {
    const std::lock_guard lock(state_->mutex);
    state_->behaviour = behaviour;
  }
  void setNextId(std::uint32_t id) {
    const std::lock_guard lock(state_->mutex);
    state_->nextId = id;
  }

  // Takes org.gtk.Notifications as well, for the application whose desktop file is installed.
  void takeLasting(const char* applicationId) {
    TestBus::ownName(connection_, lastingName);
    const std::lock_guard lock(state_->mutex);
    state_->installed = applicationId;
  }
  // What that shows, as it came, by identifier.
  std::map<std::string, std::shared_ptr<GVariant>> lasting() const {
    const std::lock_guard lock(state_->mutex);
    return state_->lasting;
  }

  std::vector<Notification> notifications() const {
    const std::lock_guard lock(state_->mutex);
    return state_->notifications;
  }
  // The ids that it was asked to close.
  std::vector<std::uint32_t> closed() const {
    const std::lock_guard lock(state_->mutex);
    return state_->closed;
  }
  // How often a method was called, answered or not.
  int calls(const std::string& method) const {
    const std::lock_guard lock(state_->mutex);
    const auto found = state_->calls.find(method);
    return found == state_->calls.end() ? 0 : found->second;
  }

  // The user chooses an action ("default" for a click on the notification itself).
  void invoke(std::uint32_t id, const std::string& action, const std::string& activationToken = "") {
    if (!activationToken.empty())
      emit("ActivationToken", g_variant_new("(us)", id, activationToken.c_str()));
    emit("ActionInvoked", g_variant_new("(us)", id, action.c_str()));
  }
  void close(std::uint32_t id) {
    constexpr std::uint32_t dismissedByTheUser = 2;
    emit("NotificationClosed", g_variant_new("(uu)", id, dismissedByTheUser));
  }
  void emit(const char* member, GVariant* arguments) {
    g_dbus_connection_emit_signal(connection_.get(), nullptr, path, name, member, arguments, nullptr);
    TestBus::roundTrip(connection_);
  }
  // The answers to what came while it was silent, in that order. It stays silent.
  void answerHeldBack() {
    const std::lock_guard lock(state_->mutex);
    for (const auto& [message, id] : std::exchange(state_->heldBack, {}))
      state_->reply(connection_.get(), message.get(), id, Behaviour::answer);
  }

  void stop() {
    if (!connection_)
      return;
    g_dbus_connection_close_sync(connection_.get(), nullptr, nullptr);
    connection_ = nullptr;
    const std::lock_guard lock(state_->mutex);
    state_->heldBack.clear();
  }
  void start() {
    connection_ = TestBus::connectTo(address_);
    g_dbus_connection_add_filter(connection_.get(), filter, new std::shared_ptr<State>(state_),
                                 [](gpointer data) { delete static_cast<std::shared_ptr<State>*>(data); });
    TestBus::ownName(connection_, name);
  }
  void restart() {
    stop();
    start();
  }

  static constexpr const char* name = "org.freedesktop.Notifications";
  static constexpr const char* path = "/org/freedesktop/Notifications";
  static constexpr const char* lastingName = "org.gtk.Notifications";

 private:
  struct State {
    // With the mutex held.
    void take(GDBusConnection* connection, GDBusMessage* message);
    void reply(GDBusConnection* connection, GDBusMessage* message, std::uint32_t id, Behaviour how);
    void takeLasting(GDBusMessage* message);

    std::mutex mutex;
    std::vector<std::string> capabilities = {"actions", "body", "body-markup"};
    Behaviour behaviour = Behaviour::answer;
    std::uint32_t nextId = 1;
    std::vector<Notification> notifications;
    std::vector<std::uint32_t> closed;
    std::map<std::string, int> calls;
    std::string installed;
    std::map<std::string, std::shared_ptr<GVariant>> lasting;
    std::vector<std::pair<glib::Ref<GDBusMessage>, std::uint32_t>> heldBack;
  };

  static GDBusMessage* filter(GDBusConnection* connection, GDBusMessage* message, gboolean incoming,
                              gpointer data) {
    const char* interface = g_dbus_message_get_interface(message);
    if (!incoming || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_METHOD_CALL ||
        !interface || !std::string(interface).ends_with(".Notifications"))
      return message;
    const auto state = *static_cast<std::shared_ptr<State>*>(data);
    const std::lock_guard lock(state->mutex);
    if (std::string(interface) == name)
      state->take(connection, message);
    else
      state->takeLasting(message);
    g_object_unref(message);
    return nullptr;
  }

  const std::string address_;
  const std::shared_ptr<State> state_ = std::make_shared<State>();
  glib::Ref<GDBusConnection> connection_;
};

inline void NotificationServer::State::take(GDBusConnection* connection, GDBusMessage* message) {
  const std::string method = g_dbus_message_get_member(message);
  ++calls[method];
  auto* arguments = g_dbus_message_get_body(message);
  std::uint32_t id = 0;
  if (method == "Notify" && arguments && g_variant_is_of_type(arguments, G_VARIANT_TYPE("(susssasa{sv}i)"))) {
    Notification one;
    const char *summary = nullptr, *body = nullptr;
    GVariantIter *actions = nullptr, *hints = nullptr;
    g_variant_get(arguments, "(&su&s&s&sasa{sv}i)", nullptr, nullptr, nullptr, &summary, &body, &actions,
                  &hints, nullptr);
    one.summary = summary;
    one.body = body;
    const char* text = nullptr;
    while (g_variant_iter_next(actions, "&s", &text))
      one.actions.emplace_back(text);
    GVariant* value = nullptr;
    while (g_variant_iter_next(hints, "{&sv}", &text, &value)) {
      one.hints[text] = glib::CString(g_variant_print(value, TRUE)).get();
      g_variant_unref(value);
    }
    g_variant_iter_free(actions);
    g_variant_iter_free(hints);
    one.arrival = g_get_monotonic_time();
    if (behaviour != Behaviour::refuse)
      one.id = id = nextId++;
    notifications.push_back(std::move(one));
  }
  if (method == "CloseNotification" && arguments && g_variant_is_of_type(arguments, G_VARIANT_TYPE("(u)"))) {
    g_variant_get(arguments, "(u)", &id);
    closed.push_back(id);
    constexpr std::uint32_t closedByACall = 3;
    g_dbus_connection_emit_signal(connection, nullptr, path, name, "NotificationClosed",
                                  g_variant_new("(uu)", id, closedByACall), nullptr);
  }
  if (behaviour == Behaviour::silent)
    heldBack.emplace_back(glib::share(message), id);
  else
    reply(connection, message, id, behaviour);
}

inline void NotificationServer::State::takeLasting(GDBusMessage* message) {
  auto* arguments = g_dbus_message_get_body(message);
  if (!arguments || !g_variant_is_of_type(arguments, G_VARIANT_TYPE("(ssa{sv})")))
    return;
  const char *application = nullptr, *identifier = nullptr;
  GVariant* shown = nullptr;
  g_variant_get(arguments, "(&s&s@a{sv})", &application, &identifier, &shown);
  const std::shared_ptr<GVariant> entries = glib::Owned<GVariant>(shown);
  if (application == installed)
    lasting[identifier] = entries;
}

inline void NotificationServer::State::reply(GDBusConnection* connection, GDBusMessage* message,
                                             std::uint32_t id, Behaviour how) {
  const std::string method = g_dbus_message_get_member(message);
  auto answer = glib::adopt(g_dbus_message_new_method_reply(message));
  if (method == "Notify" && how == Behaviour::refuse) {
    answer =
        glib::adopt(g_dbus_message_new_method_error(message, "org.example.Error.Refused", "%s", "not today"));
  } else if (how == Behaviour::garbage) {
    g_dbus_message_set_body(answer.get(), g_variant_new("(sd)", "no such thing", 0.5));
  } else if (method == "Notify") {
    g_dbus_message_set_body(answer.get(), g_variant_new("(u)", id));
  } else if (method == "GetCapabilities") {
    GVariantBuilder texts;
    g_variant_builder_init(&texts, G_VARIANT_TYPE_STRING_ARRAY);
    for (const auto& capability : capabilities)
      g_variant_builder_add(&texts, "s", capability.c_str());
    g_dbus_message_set_body(answer.get(), g_variant_new("(as)", &texts));
  }
  g_dbus_connection_send_message(connection, answer.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
}

} // namespace ondrel::support
