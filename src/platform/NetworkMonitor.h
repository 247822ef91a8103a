#pragma once

#include "base/Observable.h"

namespace ondrel::platform {

// Tells whether the machine has a way to others, as far as the desktop knows. Main thread only.
class NetworkMonitor {
 public:
  virtual ~NetworkMonitor() = default;
  base::Observable<bool> isAvailable{true};
};

} // namespace ondrel::platform
