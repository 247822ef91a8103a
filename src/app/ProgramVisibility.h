#pragma once

#include "async/EventLoop.h"
#include "async/Scope.h"

namespace ondrel::platform {
class Application;
}

namespace ondrel::app {

class WindowManager;

// Takes the whole program off the screen and brings it back, as the user asks from outside its windows.
// Main thread only.
class ProgramVisibility {
 public:
  // Both outlive it.
  ProgramVisibility(platform::Application& application, WindowManager& windows)
      : application_(application), windows_(windows) {}

  // Hides the program, or brings it back when it is hidden. Without any window there is nothing to hide: one
  // opens.
  void toggle();
  // Into the foreground, with a window. Hides it when it is there already. It comes `pause` later, for
  // desktops that put something else in front meanwhile (a menu that closes).
  void toggleForeground(async::Duration pause = {});

 private:
  bool openedWindow();
  void comeBack(async::Duration pause);
  async::Task<void> activateAfter(async::Duration pause);

  platform::Application& application_;
  WindowManager& windows_;
  async::Scope scope_;
};

} // namespace ondrel::app
