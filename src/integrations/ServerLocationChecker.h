#pragma once

#include "async/Scope.h"
#include "async/Task.h"

#include <expected>
#include <optional>
#include <string>

namespace ondrel::jmap {
class JMAPClient;
}

namespace ondrel::platform {
class Application;
class HttpClient;
class Panels;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::integrations {

// Tells the user in which data centres the service's web front end and the account's data sit. Main thread
// only.
class ServerLocationChecker {
 public:
  enum class CheckError { missingHeader, badResponse };
  static std::string description(CheckError error);

  struct Location {
    std::string frontendValue = {};              // as the service names it
    std::string frontendHost = {};               // that was asked
    std::optional<std::string> accountHost = {}; // absent where the session can't be read

    bool operator==(const Location&) const = default;
  };

  // All outlive it.
  struct Services {
    platform::HttpClient& http;
    settings::AppSettings& settings;
    jmap::JMAPClient* session = nullptr; // null for none
    platform::Application& application;
    platform::Panels& panels;
  };
  explicit ServerLocationChecker(Services services) : services_(services) {}

  // Checks and shows an alert; nothing while that is under way.
  void show();

  // The error is a sentence for the user.
  async::Task<std::expected<Location, std::string>> check(jmap::JMAPClient* jmapSession);
  // The text of the alert.
  static std::string display(const Location& location);

 private:
  async::Task<void> checkAndShow();

  const Services services_;
  async::TaskHandle task_;
  async::Scope scope_;
};

} // namespace ondrel::integrations
