#pragma once

#include <string>

namespace ondrel::platform {

// The desktop's list of applications that run without a window, where it keeps one. Main thread only.
class BackgroundApplications {
 public:
  virtual ~BackgroundApplications() = default;
  // What the program does meanwhile, in a few words.
  virtual void setStatus(const std::string& message) = 0;
};

} // namespace ondrel::platform
