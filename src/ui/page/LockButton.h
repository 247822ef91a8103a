#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::ui {

// The padlock of the toolbar: whether the program hides when another one comes to the front. The widget may
// go after this object.
class LockButton {
 public:
  // The settings outlive it.
  explicit LockButton(settings::AppSettings& settings);

  GtkWidget* widget() const { return button_.get(); }

 private:
  void update();

  settings::AppSettings& settings_;
  const glib::Ref<GtkWidget> button_;
  glib::Connection clicked_;
  base::Subscription changes_;
};

} // namespace ondrel::ui
