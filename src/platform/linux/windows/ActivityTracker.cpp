#include "platform/linux/windows/ActivityTracker.h"

namespace ondrel::platform::windows {

void ActivityTracker::update(bool hasKeyboard) {
  hasKeyboard_ = hasKeyboard;
  if (hasKeyboard) {
    waiting_ = false;
    resigning_.stop();
    if (!active_) {
      active_ = true;
      events_.activated();
    }
  } else {
    loseKeyboard(grace);
  }
}

void ActivityTracker::loseKeyboard(async::Duration patience) {
  if (!active_ || waiting_ || holds_ > 0)
    return;
  waiting_ = true;
  resigning_ = async::Timer(patience, [this] { resign(); });
}

base::Subscription ActivityTracker::hold() {
  ++holds_;
  waiting_ = false;
  resigning_.stop();
  return base::Subscription([weak = std::weak_ptr(self_)] {
    const auto self = weak.lock();
    if (self && --(*self)->holds_ == 0 && !(*self)->hasKeyboard_)
      (*self)->loseKeyboard(graceAfterPanel);
  });
}

void ActivityTracker::resign() {
  waiting_ = false;
  events_.deactivating();
  active_ = false;
  events_.deactivated();
}

} // namespace ondrel::platform::windows
