#pragma once

#include <string>
#include <vector>

namespace ondrel::platform::desktop {

// The instance of an application that already runs in this session, reached over the session bus
// (org.freedesktop.Application of the desktop entry standard).
class RunningInstance {
 public:
  explicit RunningInstance(std::string applicationId) : id_(std::move(applicationId)) {}

  bool exists() const; // false without a session bus
  // Hands it URLs (valid UTF-8), or asks it to come to the front when there are none, with the token that the
  // desktop gave this process for that. Doesn't wait until it has done so. False, with a log line, when it
  // can't be reached.
  bool open(const std::vector<std::string>& urls) const;

 private:
  std::string id_;
};

} // namespace ondrel::platform::desktop
