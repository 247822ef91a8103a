#pragma once

#include "platform/NativeView.h"
#include "platform/Window.h"

#include <functional>
#include <memory>

namespace ondrel::platform {

// What `ui/` puts around the tabs of one top-level: the bar above them. Owned by the top-level.
class GroupChrome {
 public:
  virtual ~GroupChrome() = default;
  virtual NativeView topBar() = 0;
  // The tab in front is another one, or there is none any more. Also called once at the start.
  virtual void selectedWindowDidChange(std::shared_ptr<Window> window) = 0;
};

using GroupChromeFactory = std::function<std::unique_ptr<GroupChrome>()>;

} // namespace ondrel::platform
