#pragma once

#include <expected>
#include <memory>
#include <optional>
#include <string>

namespace ondrel::start {

// The program on the demonstration service: a child process that ends with this one, and a profile of its own
// that the environment of this process points to. A throw-away profile is removed when the object dies.
class DemoMode {
 public:
  // Changes the environment: call it before anything reads it. The error is one line for standard error.
  static std::expected<std::unique_ptr<DemoMode>, std::string>
  start(const std::string& executableFolder, const std::optional<std::string>& keptProfile);
  ~DemoMode();
  DemoMode(const DemoMode&) = delete;
  DemoMode& operator=(const DemoMode&) = delete;

 private:
  DemoMode() = default;
  std::optional<std::string> launch(const std::string& program);

  std::string profile_;
  bool isKept_ = false;
  int serviceInput_ = -1; // the service ends when this is closed
  int service_ = -1;
};

} // namespace ondrel::start
