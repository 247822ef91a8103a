#pragma once

#include "async/Task.h"
#include "platform/NotificationCenter.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace ondrel::jmap {

// The program's way to the desktop's notifications: categories with their response handlers, and sending that
// never fails aloud. One for the process, main thread only; outlives everything that registers a handler.
class NotificationManager final : platform::NotificationCenterDelegate {
 public:
  using ResponseHandler = std::function<void(const platform::NotificationResponse&)>;

  // Becomes the centre's delegate. The centre outlives it.
  explicit NotificationManager(platform::NotificationCenter& center);
  ~NotificationManager() override;

  // Asks for permission and logs the answer.
  async::Task<void> requestPermission();
  // Adds a category; one of the same identifier is replaced.
  void registerCategory(platform::NotificationCategory category);
  // Replaces an earlier handler of that category.
  void setResponseHandler(const std::string& categoryIdentifier, ResponseHandler handler);
  // What a notification can be withdrawn by; another one each time.
  static std::string newIdentifier();
  // Delivers, and logs how that went.
  async::Task<void> send(platform::NotificationRequest request);
  async::Task<void> send(std::string title, std::string body, std::string categoryIdentifier,
                         std::map<std::string, std::string> userInfo);
  // Takes a notification away that says nothing new any more.
  void withdraw(const std::string& identifier);

 private:
  void willPresent(const platform::NotificationRequest& request) override;
  void didReceive(const platform::NotificationResponse& response) override;

  platform::NotificationCenter& center_;
  std::vector<platform::NotificationCategory> categories_;
  std::map<std::string, ResponseHandler> responseHandlers_;
};

} // namespace ondrel::jmap
