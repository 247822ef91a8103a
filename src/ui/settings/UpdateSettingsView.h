#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"
#include "ui/settings/SettingSwitch.h"
#include "ui/settings/SettingsSection.h"

#include <vector>

namespace ondrel::ui {

// When the program looks for updates by itself. Hidden where it can't.
class UpdateSettingsView final : public SettingsSection {
 public:
  // Both outlive it.
  UpdateSettingsView(integrations::UpdateManager& manager, settings::AppSettings& settings);

  AdwPreferencesGroup* group() override { return group_.get(); }

 private:
  void makeInterval();
  void choose();
  void update();

  integrations::UpdateManager& manager_;
  settings::AppSettings& settings_;
  const glib::Ref<AdwPreferencesGroup> group_;
  const SettingSwitch checks_;
  const SettingSwitch downloads_;
  AdwComboRow* const interval_;
  const glib::Connection names_;
  bool isUpdating_ = false;
  glib::Connection chosen_;
  std::vector<base::Subscription> subscriptions_;
};

} // namespace ondrel::ui
