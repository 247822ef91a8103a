#pragma once

#include "async/EventLoop.h"

#include <chrono>
#include <optional>
#include <string>

namespace ondrel::platform::desktop {

// What the desktop gives with a user's click, so that a window may come to the front. It serves once and
// soon: with an old one the desktop would refuse what it grants without any.
class ActivationToken {
 public:
  static constexpr async::Duration lifetime = std::chrono::seconds(10);

  void set(std::string token);
  std::optional<std::string> take();

 private:
  std::optional<std::string> token_;
  async::TimePoint end_;
};

// The toolkit raises the next window with it.
void useActivationToken(const std::string& token);

} // namespace ondrel::platform::desktop
