#pragma once

#include "platform/linux/glib/Ref.h"
#include "ui/settings/SettingSwitch.h"
#include "ui/settings/SettingsSection.h"
#include "ui/settings/ZoomSettingRow.h"

#include <deque>

namespace ondrel::ui {

// How the program behaves on the desktop and in its windows.
class UISettingsView final : public SettingsSection {
 public:
  UISettingsView(settings::AppSettings& settings, const std::string& displayName);

  AdwPreferencesGroup* group() override { return group_.get(); }

 private:
  const glib::Ref<AdwPreferencesGroup> group_;
  std::deque<SettingSwitch> rows_;
  ZoomSettingRow zoom_;
  base::Subscription hiding_;
  base::Subscription environment_;
};

} // namespace ondrel::ui
