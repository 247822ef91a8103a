#include "ui/settings/SettingSwitch.h"

#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"
#include "ui/settings/SettingsRows.h"

#include <utility>

namespace ondrel::ui {

SettingSwitch::SettingSwitch(settings::AppSettings& settings, settings::Key<bool> key, Texts texts)
    : settings_(settings), key_(key), texts_(std::move(texts)), control_(GTK_SWITCH(gtk_switch_new())),
      row_(switchRow(std::string(key.name).c_str(), control_)) {
  setRowTitle(row_, GTK_WIDGET(control_), texts_.title);
  update();
  turned_ = glib::onNotify(control_, "active", [this] {
    if (!isUpdating_)
      settings_.set(key_, gtk_switch_get_active(control_) != FALSE);
  });
  changes_ = settings_.defaults().changed.subscribe([this](const std::string& changed) {
    if (changed == key_.name)
      update();
  });
}

void SettingSwitch::setNote(std::string note) {
  texts_.note = std::move(note);
  update();
}

void SettingSwitch::update() {
  isUpdating_ = true;
  const bool isOn = settings_.get(key_);
  gtk_switch_set_active(control_, isOn);
  setRowSubtitle(row_, isOn && !texts_.noteWhileOn.empty() ? texts_.noteWhileOn : texts_.note);
  isUpdating_ = false;
}

} // namespace ondrel::ui
