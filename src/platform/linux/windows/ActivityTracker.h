#pragma once

#include "async/Timer.h"

#include <chrono>
#include <functional>

namespace ondrel::platform::windows {

// Turns "one of our top-levels has the keyboard" into the application's being active. Between two of them the
// keyboard is nowhere for a moment: the application stays active when it comes back soon.
class ActivityTracker {
 public:
  static constexpr std::chrono::milliseconds grace{50};

  struct Events {
    std::function<void()> activated;
    std::function<void()> deactivating;
    std::function<void()> deactivated;
  };
  explicit ActivityTracker(Events events) : events_(std::move(events)) {}

  void update(bool hasKeyboard);
  bool isActive() const { return active_; }

 private:
  void resign();

  Events events_;
  bool active_ = false;
  bool waiting_ = false; // for the keyboard to come back
  async::Timer resigning_;
};

} // namespace ondrel::platform::windows
