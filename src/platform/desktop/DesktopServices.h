#pragma once

#include "async/Task.h"

#include <vector>

namespace ondrel::platform {

// What the program uses of the desktop around it and does without where it isn't there.
enum class DesktopService { sessionBus, notifications, statusIcons, portal, accessibility, settings };

// Tells which services the desktop lacks. Main thread only.
class DesktopServices {
 public:
  virtual ~DesktopServices() = default;
  // In the order of the enumeration. Takes some seconds at most: what gives no answer counts as missing.
  virtual async::Task<std::vector<DesktopService>> missing() = 0;
};

} // namespace ondrel::platform
