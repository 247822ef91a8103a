#include "platform/linux/windows/ActivityTracker.h"

namespace ondrel::platform::windows {

void ActivityTracker::update(bool hasKeyboard) {
  if (hasKeyboard) {
    waiting_ = false;
    resigning_.stop();
    if (!active_) {
      active_ = true;
      events_.activated();
    }
  } else if (active_ && !waiting_) {
    waiting_ = true;
    resigning_ = async::Timer(grace, [this] { resign(); });
  }
}

void ActivityTracker::resign() {
  waiting_ = false;
  events_.deactivating();
  active_ = false;
  events_.deactivated();
}

} // namespace ondrel::platform::windows
