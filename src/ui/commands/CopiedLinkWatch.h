#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"

namespace ondrel::app {
class WindowManager;
}

namespace ondrel::platform {
class Application;
}

namespace ondrel::ui {

// Keeps what the program knows of the clipboard fresh while it is in front. Reading takes a moment, so a
// command's key must find the answer there already.
class CopiedLinkWatch {
 public:
  CopiedLinkWatch(platform::Application& application, app::WindowManager& windows);

 private:
  base::Subscription activation_;
  glib::Connection clipboard_;
};

} // namespace ondrel::ui
