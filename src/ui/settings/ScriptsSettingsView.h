#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"
#include "ui/settings/SettingSwitch.h"
#include "ui/settings/SettingsSection.h"

#include <optional>
#include <vector>

namespace ondrel::ui {

// What the user's own scripts and style sheets do in the service's pages.
class ScriptsSettingsView final : public SettingsSection {
 public:
  // Both outlive it.
  ScriptsSettingsView(integrations::ScriptsManager& scripts, settings::AppSettings& settings);

  AdwPreferencesGroup* group() override { return group_.get(); }

 private:
  void addRows();
  GtkWidget* addRow(AdwActionRow* row, const char* identifier, const char* note,
                    void (*act)(ScriptsSettingsView&));
  void update();

  integrations::ScriptsManager& scripts_;
  settings::AppSettings& settings_;
  const glib::Ref<AdwPreferencesGroup> group_;
  // Absent where there can be no folder.
  std::optional<SettingSwitch> runJS_;
  std::optional<SettingSwitch> injectCSS_;
  GtkWidget* runNow_ = nullptr;
  std::vector<glib::Connection> connections_;
  std::vector<base::Subscription> subscriptions_;
};

} // namespace ondrel::ui
