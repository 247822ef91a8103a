#pragma once

#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <functional>

namespace ondrel::ui {

// Tells the width of a widget that reaches over its window, in pixels: as soon as it is on screen, and each
// time that it changes. What is hidden in a narrow window begins hidden: a window can't become narrower than
// what it shows. The widget outlives this.
class WidthWatch {
 public:
  WidthWatch(GtkWidget* widget, std::function<void(int width)> changed);

 private:
  void follow();

  GtkWidget* const widget_;
  const std::function<void(int)> changed_;
  int width_ = 0;
  const glib::Connection realized_;
  glib::Connection layout_; // of the top-level's surface
};

} // namespace ondrel::ui
