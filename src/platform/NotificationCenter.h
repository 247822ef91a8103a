#pragma once

#include "async/Task.h"

#include <expected>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::platform {

struct NotificationAction {
  std::string identifier;
  std::string title;
  bool destructive = false;

  bool operator==(const NotificationAction&) const = default;
};

// What notifications of one kind offer beside being clicked.
struct NotificationCategory {
  std::string identifier;
  std::vector<NotificationAction> actions;
  // An answer needs no more than the userInfo, so that another run can do what it asks for.
  bool outlivesProgram = false;

  bool operator==(const NotificationCategory&) const = default;
};

// Title and body are text, never markup; each is one line, and furtherLines are those of the body behind its
// first. userInfo comes back with the response. It stays in this process unless the category outlives the
// program.
struct NotificationContent {
  std::string title;
  std::string body;
  std::string categoryIdentifier;
  std::map<std::string, std::string> userInfo;
  std::vector<std::string> furtherLines = {};

  std::string wholeBody() const {
    auto text = body;
    for (const auto& line : furtherLines)
      text += "\n" + line;
    return text;
  }
};

struct NotificationRequest {
  std::string identifier;
  NotificationContent content;
};

// What the user did with a notification.
struct NotificationResponse {
  static constexpr std::string_view defaultAction = "default"; // the notification itself was clicked

  std::string actionIdentifier;
  NotificationRequest request;
};

enum class AuthorizationStatus { notDetermined = 0, denied = 1, authorized = 2 };

class NotificationCenterDelegate {
 public:
  virtual ~NotificationCenterDelegate() = default;
  // A notification is about to be shown.
  virtual void willPresent(const NotificationRequest& request) = 0;
  // Comes for live notifications of this run, at most once for each. Also for those of an earlier run whose
  // category outlives the program: the request has identifier, category and userInfo then.
  virtual void didReceive(const NotificationResponse& response) = 0;
};

// The desktop's notifications. Nothing here waits without limit for a notification server. Main thread only.
class NotificationCenter {
 public:
  virtual ~NotificationCenter() = default;

  // Borrowed; nullptr for none.
  virtual void setDelegate(NotificationCenterDelegate* delegate) = 0;
  // Whether somebody will show notifications; an error is a text for the log.
  virtual async::Task<std::expected<bool, std::string>> requestAuthorization() = 0;
  virtual async::Task<AuthorizationStatus> authorizationStatus() = 0;
  // Replaces the known categories; notifications of unknown ones have no actions of their own.
  virtual void setCategories(std::vector<NotificationCategory> categories) = 0;
  // Shows it now, with the desktop's sound for new mail. An error is a text for the log.
  virtual async::Task<std::expected<void, std::string>> add(NotificationRequest request) = 0;
  // Takes it away, also where add() has given up waiting for it and it is shown later. Nothing happens where
  // the user has answered or closed it.
  virtual void withdraw(const std::string& identifier) = 0;
};

} // namespace ondrel::platform
