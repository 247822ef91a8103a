#pragma once

#include "base/Translation.h"
#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

namespace ondrel::ui {

// The row of the menu that shows the zoom of the tab in front and changes it.
class ZoomRow {
 public:
  static constexpr const char* title = base::trMark("Zoom"); // of the group of commands that it stands for

  ZoomRow();

  GtkWidget* widget() const { return row_.get(); }
  void show(double zoom);

 private:
  glib::Ref<GtkWidget> row_;
  GtkWidget* percentage_;
};

} // namespace ondrel::ui
