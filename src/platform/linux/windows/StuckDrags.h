#pragma once

#include "async/Timer.h"
#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <vector>

namespace ondrel::platform::windows {

// On X11 without a desktop window behind all others, GTK (4.8) never ends a drag that is dropped on the bare
// root: a dragged tab would be with the pointer for ever. Such drags are ended as drops on nothing, to which
// tab views answer with a top-level of its own. One object for the program.
class StuckDrags {
 public:
  StuckDrags();
  ~StuckDrags();
  StuckDrags(const StuckDrags&) = delete;
  StuckDrags& operator=(const StuckDrags&) = delete;

 private:
  void dropped(GdkDrag* drag);
  void forget();

  const guint signal_;
  const gulong hook_;
  async::Timer timer_;
  std::vector<glib::Connection> ends_; // of the drag that is watched
};

} // namespace ondrel::platform::windows
