#pragma once

#include "async/Task.h"

#include <optional>
#include <string>

namespace ondrel::platform {

class Clipboard {
 public:
  virtual ~Clipboard() = default;
  virtual async::Task<std::optional<std::string>> readString() = 0;
  virtual void writeString(const std::string& text) = 0;
};

} // namespace ondrel::platform
