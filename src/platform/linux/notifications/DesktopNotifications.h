#pragma once

#include "async/Future.h"
#include "async/Scope.h"
#include "platform/NotificationCenter.h"
#include "platform/linux/desktop/MessageBus.h"
#include "platform/linux/notifications/LastingNotifications.h"
#include "platform/linux/notifications/LiveNotifications.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <set>

namespace ondrel::platform::notifications {

// Notifications through org.freedesktop.Notifications (freedesktop.org, version 1.2). Title and
// lines are bounded in length; with responses they come back as they were shown. Works with
// servers that are missing, slow, started on demand or restarted meanwhile.
class DesktopNotifications final : public NotificationCenter {
 public:
  struct Options {
    std::string applicationId; // the desktop file goes by it
    std::string iconName = applicationId;
    std::string applicationName;
    // Gets what lets a window come to the front, just before the delegate hears of the click.
    std::function<void(const std::string& token)> useActivationToken;
    // Absent where nothing outlives the program.
    std::optional<LastingNotifications::Options> lasting = {};
    desktop::BusConnector bus = desktop::sessionBus;
  };
  // How long add() waits. A notification that the server takes later is shown and can be clicked.
  static constexpr async::Duration answerLimit = std::chrono::seconds(5);
  static constexpr std::size_t longestTitle = 200; // characters
  static constexpr std::size_t longestBody = 1000; // characters

  explicit DesktopNotifications(Options options);

  void setDelegate(NotificationCenterDelegate* delegate) override { delegate_ = delegate; }
  async::Task<std::expected<bool, std::string>> requestAuthorization() override;
  async::Task<AuthorizationStatus> authorizationStatus() override;
  void setCategories(std::vector<NotificationCategory> categories) override;
  async::Task<std::expected<void, std::string>> add(NotificationRequest request) override;
  void withdraw(const std::string& identifier) override;
  // The program ends: what it shows, or its server hasn't answered for yet, goes to a server that starts it
  // for an answer, where that is possible, and from the screen otherwise, as nobody would answer. Waits for
  // nothing.
  void handOver();

 private:
  using Result = std::expected<void, std::string>;
  struct Server {
    std::string name; // unique, so that nobody else gets what was made for this one
    bool bodyMarkup = false;
    bool actions = false;
  };

  async::Task<glib::Ref<GDBusConnection>> connected();
  async::Task<std::expected<bool, std::string>> isAvailable();
  async::Task<std::expected<Server, std::string>> askServer(glib::Ref<GDBusConnection> connection);
  async::Task<void> deliver(NotificationRequest request, async::Resolver<Result> resolver);
  async::Task<Result> show(NotificationRequest request);
  async::Task<desktop::BusAnswer> notify(glib::Ref<GDBusConnection> connection, Server server,
                                         NotificationRequest request);
  const NotificationCategory* categoryOf(const NotificationContent& content) const;
  std::vector<NotificationAction> actionsOf(const NotificationContent& content) const;
  async::Task<void> close(std::string server, std::uint32_t id);
  void showLasting(const NotificationRequest& request) const;
  void serverChanged(const std::string& owner);
  void received(const std::string& sender, const std::string& member, GVariant* arguments);
  void invoked(const std::string& sender, std::uint32_t id, const std::string& action);

  const Options options_;
  NotificationCenterDelegate* delegate_ = nullptr;
  std::vector<NotificationCategory> categories_;
  glib::Ref<GDBusConnection> connection_;
  std::optional<Server> server_; // asked since it came
  // By identifier: those that no server has answered for yet, bounded.
  std::map<std::string, NotificationRequest> onTheirWay_;
  std::set<std::string> unwantedThere_; // those among them that have been withdrawn or handed over
  // Shared with calls under way, whose answers may come after the end of this object.
  std::shared_ptr<LiveNotifications> live_ = std::make_shared<LiveNotifications>();
  std::optional<LastingNotifications> lasting_;
  desktop::BusNameWatch nameWatch_;
  desktop::BusSubscription signals_;
  async::Scope scope_;
};

} // namespace ondrel::platform::notifications
