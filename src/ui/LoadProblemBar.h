#pragma once

#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <functional>
#include <string>

namespace ondrel::ui {

// Tells above the page that the service can't be reached and that the program keeps trying.
class LoadProblemBar {
 public:
  explicit LoadProblemBar(std::function<void()> tryNow);

  GtkWidget* widget() const { return revealer_.get(); }
  void show(const std::string& description);
  void hide();

 private:
  glib::Ref<GtkWidget> revealer_;
  GtkWidget* description_;
  glib::Connection clicked_;
};

} // namespace ondrel::ui
