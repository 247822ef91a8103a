#pragma once

#include "async/Scope.h"

namespace ondrel::platform {
class Application;
class Panels;
} // namespace ondrel::platform

namespace ondrel::app {

class CloseQuestion;
class WindowManager;

// The user's way out of the program: it ends when its pages may go, the user has given up the downloads that
// are under way, and the letters have left. What the desktop orders (a signal, the end of the session)
// doesn't come this way and ends it at once.
class Quitting {
 public:
  // All outlive this object.
  Quitting(platform::Application& application, const WindowManager& windows, CloseQuestion& question,
           platform::Panels& panels)
      : application_(application), windows_(windows), question_(question), panels_(panels) {}

  // Nothing while an earlier wish is under way.
  void request();
  // The same, to be started again afterwards with the session as it was.
  void requestRestart();
  // The program has ended by such a wish.
  bool restarts() const { return restarts_; }

 private:
  async::Task<void> quit(bool restarts);

  platform::Application& application_;
  const WindowManager& windows_;
  CloseQuestion& question_;
  platform::Panels& panels_;
  bool restarts_ = false;
  async::TaskHandle underWay_;
  async::Scope scope_;
};

} // namespace ondrel::app
