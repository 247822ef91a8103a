#pragma once

#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

#include <string>

namespace ondrel::ui {

// Shows where the link under the pointer leads, in one line over the lower edge of the page.
class MouseOverBar {
 public:
  MouseOverBar();

  GtkWidget* widget() const { return bar_.get(); }
  // From the page; an empty text hides the bar.
  void setText(const std::string& text);

 private:
  glib::Ref<GtkWidget> bar_;
  GtkWidget* label_;
};

} // namespace ondrel::ui
