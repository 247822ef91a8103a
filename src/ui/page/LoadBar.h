#pragma once

#include "async/Timer.h"
#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

namespace ondrel::ui {

// The thin bar over the upper edge of a page that shows how much of it has come.
class LoadBar {
 public:
  LoadBar();

  GtkWidget* widget() const { return bar_.get(); }
  void show(double progress); // from 0 to 1
  // It has come, or won't.
  void end();

 private:
  glib::Ref<GtkWidget> bar_;
  async::Timer hide_;
};

} // namespace ondrel::ui
