#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"
#include "ui/settings/SettingSwitch.h"
#include "ui/settings/SettingsSection.h"

#include <string>
#include <vector>

namespace ondrel::integrations {
class SpellingSettings;
}

namespace ondrel::ui {

// Whether the spelling is checked, and in which of the languages that have a dictionary.
class SpellingSettingsView final : public SettingsSection {
 public:
  // Both outlive it.
  SpellingSettingsView(integrations::SpellingSettings& model, settings::AppSettings& settings);

  AdwPreferencesGroup* group() override { return group_.get(); }

 private:
  struct Language {
    std::string tag;
    GtkSwitch* control;
  };
  void addLanguages();
  void tellExpansion();
  void update();

  integrations::SpellingSettings& model_;
  settings::AppSettings& settings_;
  const glib::Ref<AdwPreferencesGroup> group_;
  SettingSwitch check_;
  GtkWidget* languages_ = nullptr; // none without a dictionary
  std::vector<Language> controls_;
  bool isUpdating_ = false;
  std::vector<glib::Connection> turned_;
  base::Subscription changes_;
};

} // namespace ondrel::ui
