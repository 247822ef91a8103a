#pragma once

#include "platform/Window.h"

#include <memory>

namespace ondrel::app {

// Where tabs go that are opened behind the one in front: each behind the last one that came from it, so that
// they stand in the order of their opening. Looking at another tab begins anew.
class OpenedTabs {
 public:
  using WindowPtr = std::shared_ptr<platform::Window>;

  WindowPtr neighbour(const WindowPtr& opener) const {
    auto last = last_.lock();
    const bool follows =
        last && opener_.lock() == opener && last->tabGroup() && last->tabGroup() == opener->tabGroup();
    return follows ? last : opener;
  }
  void didOpen(const WindowPtr& opener, const WindowPtr& window) {
    opener_ = opener;
    last_ = window;
  }
  void didBecomeKey(const WindowPtr& window) {
    if (window != opener_.lock())
      last_.reset();
  }

 private:
  std::weak_ptr<platform::Window> opener_;
  std::weak_ptr<platform::Window> last_;
};

} // namespace ondrel::app
