#include "platform/linux/windows/ActivityTracker.h"

#include <algorithm>
#include <utility>

namespace ondrel::platform::windows {

void ActivityTracker::update(bool hasKeyboard) {
  hasKeyboard_ = hasKeyboard;
  if (hasKeyboard) {
    if (std::exchange(waiting_, false))
      lentUntil_.reset(); // it is back
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
  if (const auto lent = std::exchange(lentUntil_, std::nullopt))
    patience = std::max(patience, *lent - async::EventLoop::current().now());
  resignAfter(patience);
}

void ActivityTracker::lendKeyboard(async::Duration longest) {
  if (waiting_)
    resignAfter(longest);
  else
    lentUntil_ = async::EventLoop::current().after(longest);
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

void ActivityTracker::resignAfter(async::Duration patience) {
  resigning_ = async::Timer(patience, [this, patience] {
    if (events_.isStillInFront && events_.isStillInFront()) {
      resignAfter(std::min<async::Duration>(2 * patience, longestGrace));
      return;
    }
    leave();
  });
}

void ActivityTracker::leave() {
  hasKeyboard_ = false;
  waiting_ = false;
  resigning_.stop();
  if (!active_)
    return;
  events_.deactivating();
  active_ = false;
  events_.deactivated();
}

} // namespace ondrel::platform::windows
