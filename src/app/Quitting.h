#pragma once

#include "async/Scope.h"

namespace ondrel::platform {
class Application;
}

namespace ondrel::app {

class CloseQuestion;

// The user's way out of the program: it ends when its pages may go. What the desktop orders (a signal, the
// end of the session) doesn't come this way and ends it at once.
class Quitting {
 public:
  // Both outlive this object.
  Quitting(platform::Application& application, CloseQuestion& question)
      : application_(application), question_(question) {}

  // Nothing while an earlier wish is under way.
  void request();

 private:
  async::Task<void> quit();

  platform::Application& application_;
  CloseQuestion& question_;
  async::TaskHandle underWay_;
  async::Scope scope_;
};

} // namespace ondrel::app
