#pragma once

#include "async/sleep.h"
#include "platform/NotificationCenter.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::support {

// Keeps what it is asked to show, and responds as the user would.
class FakeNotificationCenter final : public platform::NotificationCenter {
 public:
  void setDelegate(platform::NotificationCenterDelegate* value) override { delegate = value; }
  async::Task<std::expected<bool, std::string>> requestAuthorization() override {
    co_await async::nextTurn();
    co_return authorization;
  }
  async::Task<platform::AuthorizationStatus> authorizationStatus() override {
    co_await async::nextTurn();
    co_return status;
  }
  void setCategories(std::vector<platform::NotificationCategory> values) override {
    categories = std::move(values);
  }
  async::Task<std::expected<void, std::string>> add(platform::NotificationRequest request) override {
    requests.push_back(std::move(request));
    const auto failed = std::exchange(failNext, std::nullopt);
    const auto number = requests.size() - 1;
    if (!failed && delegate)
      delegate->willPresent(requests[number]);
    (void)co_await async::sleep(delay);
    if (failed)
      co_return std::unexpected(*failed);
    shown.push_back(requests[number].identifier);
    co_return {};
  }

  void withdraw(const std::string& identifier) override { std::erase(shown, identifier); }

  void respond(std::size_t number, std::string_view action) {
    if (delegate)
      delegate->didReceive({std::string(action), requests.at(number)});
  }

  platform::NotificationCenterDelegate* delegate = nullptr;
  std::expected<bool, std::string> authorization = true;
  platform::AuthorizationStatus status = platform::AuthorizationStatus::authorized;
  std::optional<std::string> failNext; // the error of the next add()
  async::Duration delay{0};            // of each add()

  std::vector<platform::NotificationCategory> categories;
  std::vector<platform::NotificationRequest> requests;
  std::vector<std::string> shown; // identifiers, without what was withdrawn
};

} // namespace ondrel::support
