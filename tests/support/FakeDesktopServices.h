#pragma once

#include "async/sleep.h"
#include "platform/desktop/BackgroundApplications.h"
#include "platform/desktop/DefaultMailHelper.h"
#include "platform/desktop/DesktopServices.h"
#include "platform/desktop/LoginItem.h"
#include "platform/desktop/SpellChecker.h"

#include <functional>
#include <string>
#include <vector>

namespace ondrel::support {

// Answers a second later, as a service that has to be started does.
class FakeDefaultMailHelper final : public platform::DefaultMailHelper {
 public:
  async::Task<std::expected<void, std::string>> setAsDefaultMailClient(std::string identifier) override {
    asked.push_back(std::move(identifier));
    [[maybe_unused]] const bool slept = co_await async::sleep(std::chrono::seconds(1));
    if (answer)
      didSet();
    co_return answer;
  }

  std::expected<void, std::string> answer;
  std::function<void()> didSet = [] {};
  std::vector<std::string> asked;
};

class FakeSpellChecker final : public platform::SpellChecker {
 public:
  std::vector<platform::SpellingDictionary> dictionaries() const override { return installed; }
  std::vector<std::string> userLanguages() const override { return languages; }
  void check(const std::vector<std::string>& tags) override { checked = tags; }

  std::vector<platform::SpellingDictionary> installed;
  std::vector<std::string> languages{"C"};
  std::vector<std::string> checked;
};

class FakeLoginItem final : public platform::LoginItem {
 public:
  bool isEnabled() const override { return enabled; }
  async::Task<std::expected<void, std::string>> setEnabled(bool wanted) override {
    [[maybe_unused]] const bool slept = co_await async::sleep(std::chrono::seconds(1));
    if (answer)
      enabled = wanted;
    co_return answer;
  }

  bool enabled = false;
  std::expected<void, std::string> answer;
};

class FakeBackgroundApplications final : public platform::BackgroundApplications {
 public:
  void setStatus(const std::string& message) override { told.push_back(message); }

  std::vector<std::string> told;
};

class FakeDesktopServices final : public platform::DesktopServices {
 public:
  async::Task<std::vector<platform::DesktopService>> missing() override {
    [[maybe_unused]] const bool slept = co_await async::sleep(std::chrono::seconds(1));
    co_return lacks;
  }

  std::vector<platform::DesktopService> lacks;
};

} // namespace ondrel::support
