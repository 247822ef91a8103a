#pragma once

#include "async/Timer.h"
#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

namespace ondrel::ui {

// Tells for a moment, over a corner of a page, what its zoom has become.
class ZoomHint {
 public:
  ZoomHint();

  GtkWidget* widget() const { return label_.get(); }
  void show(double zoom);

 private:
  glib::Ref<GtkWidget> label_;
  async::Timer hide_;
};

} // namespace ondrel::ui
