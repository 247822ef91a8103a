#pragma once

#include "async/Task.h"
#include "base/Event.h"

#include <expected>
#include <string>

namespace ondrel::platform {

// Whether the desktop starts the program, without a window, when the user signs in. Main thread only.
class LoginItem {
 public:
  virtual ~LoginItem() = default;
  virtual bool isEnabled() const = 0;
  // An error is a text for the log.
  virtual async::Task<std::expected<void, std::string>> setEnabled(bool enabled) = 0;

  base::Event<> changed; // by somebody else perhaps
};

} // namespace ondrel::platform
