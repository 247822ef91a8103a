#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"

#include <adwaita.h>

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::ui {

// A row with the choices for the zoom of new tabs, which follows the setting whoever changes it.
class ZoomSettingRow {
 public:
  // The settings outlive it.
  explicit ZoomSettingRow(settings::AppSettings& settings);

  GtkWidget* row() const { return GTK_WIDGET(row_); }

 private:
  void update();

  settings::AppSettings& settings_;
  AdwComboRow* const row_;
  const glib::Connection names_;
  bool isUpdating_ = false;
  glib::Connection chosen_;
  base::Subscription changes_;
};

} // namespace ondrel::ui
