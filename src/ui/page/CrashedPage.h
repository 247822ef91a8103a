#pragma once

#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <functional>

namespace ondrel::ui {

// Stands in the place of a page whose web process has ended.
class CrashedPage {
 public:
  explicit CrashedPage(std::function<void()> reload);

  GtkWidget* widget() const { return page_.get(); }
  GtkWidget* reloadButton() const { return button_; }

 private:
  glib::Ref<GtkWidget> page_;
  GtkWidget* button_;
  glib::Connection clicked_;
};

} // namespace ondrel::ui
