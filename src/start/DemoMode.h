#pragma once

#include <expected>
#include <memory>
#include <optional>
#include <string>

namespace ondrel::start {

// The program on the demonstration service: a child process that ends with this one, and a profile of its own
// that the environment of this process points to, its home included. A throw-away profile is removed when the
// object dies. Errors are one line for standard error.
class DemoMode {
 public:
  // Changes the environment: call it before anything reads it. Starts nothing, and writes nothing but
  // folders.
  static std::expected<std::unique_ptr<DemoMode>, std::string>
  prepare(const std::optional<std::string>& keptProfile);
  // Starts the service for this profile; the error, if there is one. Call it once.
  std::optional<std::string> startService(const std::string& executableFolder);
  ~DemoMode();
  DemoMode(const DemoMode&) = delete;
  DemoMode& operator=(const DemoMode&) = delete;

 private:
  DemoMode() = default;
  std::optional<std::string> launch(const std::string& program);

  bool lockProfile();

  std::string profile_;
  int lock_ = -1; // a profile is for one program at a time
  bool isKept_ = false;
  int serviceInput_ = -1; // the service ends when this is closed
  int service_ = -1;
};

} // namespace ondrel::start
