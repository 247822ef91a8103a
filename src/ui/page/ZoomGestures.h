#pragma once

#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <functional>
#include <vector>

namespace ondrel::ui {

// The wheel with Ctrl and two fingers that spread or close, over a widget. The wheel is kept from what is in
// it; the fingers are not, and what magnifies by itself in there has to be told not to.
class ZoomGestures {
 public:
  // `zoom` gets steps, positive ones for larger.
  ZoomGestures(GtkWidget* widget, std::function<void(int steps)> zoom);

 private:
  bool scrolled(GtkEventControllerScroll* controller, double distance);
  void spread(double scale);

  const std::function<void(int)> zoom_;
  double scrolled_ = 0;  // that has made no step yet, in steps
  double lastScale_ = 1; // at the last step
  std::vector<glib::Connection> connections_;
};

} // namespace ondrel::ui
