#pragma once

#include "base/Event.h"

namespace ondrel::platform {

// Tells when the machine has woken from sleep.
class SleepMonitor {
 public:
  virtual ~SleepMonitor() = default;
  base::Event<> didWake;
};

} // namespace ondrel::platform
