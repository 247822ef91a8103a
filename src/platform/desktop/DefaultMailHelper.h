#pragma once

#include "async/Task.h"

#include <expected>
#include <string>

namespace ondrel::platform {

// Makes an application the one that the desktop opens mail links with. A program in a sandbox can't do that
// itself, so a small service outside of it does. Main thread only.
class DefaultMailHelper {
 public:
  virtual ~DefaultMailHelper() = default;
  // The error is the service's text, for the user; empty where it gave none.
  virtual async::Task<std::expected<void, std::string>>
  setAsDefaultMailClient(std::string bundleIdentifier) = 0;
};

} // namespace ondrel::platform
