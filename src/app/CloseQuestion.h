#pragma once

#include "async/Task.h"

#include <memory>
#include <vector>

namespace ondrel::platform {
class Panels;
class Window;
} // namespace ondrel::platform

namespace ondrel::app {

class WindowManager;

// Asks the pages of windows that the user wants to close whether they may go, and the user once for all that
// don't want it. Both outlive the question.
class CloseQuestion {
 public:
  CloseQuestion(const WindowManager& windows, platform::Panels& panels)
      : windows_(windows), panels_(panels) {}

  // Pages are asked at the same time, and no longer than platform::closeDeadline. A window without a page,
  // or with a letter that is on its way, goes: the latter is waited for elsewhere.
  async::Task<bool> mayClose(std::vector<std::shared_ptr<platform::Window>> windows);

 private:
  const WindowManager& windows_;
  platform::Panels& panels_;
};

} // namespace ondrel::app
