#pragma once

#include "async/Timer.h"
#include "platform/linux/files/FileWatch.h"

namespace ondrel::platform::files {

class JsonUserDefaults;

// Shows the program what becomes of its settings on disk while it runs: by hand, by a second copy, by a
// program that keeps machines in step.
class DefaultsWatch {
 public:
  // The settings outlive it. Needs an event loop.
  explicit DefaultsWatch(JsonUserDefaults& defaults);

 private:
  JsonUserDefaults& defaults_;
  async::Timer settled_;
  FileWatch file_;
};

} // namespace ondrel::platform::files
