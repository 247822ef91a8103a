#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"
#include "settings/SettingsKeys.h"

#include <adwaita.h>

#include <functional>
#include <string>

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::ui {

// A row with a switch for one setting, which follows it whoever changes it.
class SettingSwitch {
 public:
  // `note` stands under the title; the second one only while the setting is on. The settings outlive it.
  struct Texts {
    std::string title;
    std::string note{};
    std::string noteWhileOn{};
  };
  SettingSwitch(settings::AppSettings& settings, settings::Key<bool> key, Texts texts);

  void setNote(std::string note);
  GtkWidget* row() const { return GTK_WIDGET(row_); }

 private:
  void update();

  settings::AppSettings& settings_;
  const settings::Key<bool> key_;
  Texts texts_;
  GtkSwitch* const control_;
  AdwActionRow* const row_;
  bool isUpdating_ = false;
  glib::Connection turned_;
  base::Subscription changes_;
};

} // namespace ondrel::ui
