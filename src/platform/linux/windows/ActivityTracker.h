#pragma once

#include "async/Timer.h"
#include "base/Event.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace ondrel::platform::windows {

// Turns "one of our top-levels has the keyboard" into the application's being active. Between two of them the
// keyboard is nowhere for a moment: the application stays active when it comes back soon.
class ActivityTracker {
 public:
  static constexpr std::chrono::milliseconds grace{50};
  // How long until it is asked anew, at most.
  static constexpr std::chrono::seconds longestGrace{1};
  // Another process has closed a panel of ours and tells us, and the desktop moves the keyboard back.
  static constexpr std::chrono::seconds graceAfterPanel{1};

  struct Events {
    std::function<void()> activated;
    std::function<void()> deactivating;
    std::function<void()> deactivated;
    // Asked when the keyboard stays away: something took it for a moment (a panel's menu, a key that a
    // program has reserved) and the window in front is ours all the same. May be empty.
    std::function<bool()> isStillInFront{};
  };
  explicit ActivityTracker(Events events) : events_(std::move(events)) {}

  void update(bool hasKeyboard);
  // For as long as this is held, an active application stays so: a panel of its own is open, which may be a
  // window of another process.
  base::Subscription hold();
  // The keyboard is about to go to something of the program's that another process shows, and comes back: the
  // application stays active until then, for that long at most.
  void lendKeyboard(async::Duration longest);
  // At once, whatever is held: the application has nothing on the screen any more.
  void leave();
  bool isActive() const { return active_; }

 private:
  void loseKeyboard(async::Duration patience);
  void resignAfter(async::Duration patience);

  Events events_;
  bool active_ = false;
  bool hasKeyboard_ = false;
  bool waiting_ = false; // for the keyboard to come back
  int holds_ = 0;
  std::optional<async::TimePoint> lentUntil_;
  async::Timer resigning_;
  std::shared_ptr<ActivityTracker*> self_ = std::make_shared<ActivityTracker*>(this); // what holds have of it
};

} // namespace ondrel::platform::windows
