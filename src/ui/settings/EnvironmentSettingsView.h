#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"
#include "ui/settings/SettingsSection.h"

namespace ondrel::ui {

// Lets the user choose between the two deployments of the service.
class EnvironmentSettingsView final : public SettingsSection {
 public:
  // The settings outlive it.
  explicit EnvironmentSettingsView(settings::AppSettings& settings);

  AdwPreferencesGroup* group() override { return group_.get(); }

 private:
  void choose();
  void update();

  settings::AppSettings& settings_;
  const glib::Ref<AdwPreferencesGroup> group_;
  AdwComboRow* const row_;
  const glib::Connection names_;
  bool isUpdating_ = false;
  glib::Connection selection_;
  base::Subscription settingChanges_;
};

} // namespace ondrel::ui
