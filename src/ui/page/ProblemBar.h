#pragma once

#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <functional>
#include <string>
#include <vector>

namespace ondrel::ui {

// Tells above the page what is wrong with it, and what can be done.
class ProblemBar {
 public:
  struct Button {
    const char* label;
    std::function<void()> clicked;
  };
  struct Content {
    const char* name; // of the widget
    const char* icon;
    const char* note = nullptr; // a dim line below; null for none
    std::vector<Button> buttons = {};
    std::function<void()> dismissed = nullptr; // null where the user can't dismiss it
  };
  explicit ProblemBar(Content content);

  GtkWidget* widget() const { return revealer_.get(); }
  void show(const std::string& title, const std::string& description);
  void hide();

 private:
  glib::Ref<GtkWidget> revealer_;
  GtkWidget* title_;
  GtkWidget* description_;
  std::vector<glib::Connection> connections_;
};

} // namespace ondrel::ui
