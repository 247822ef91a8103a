#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"
#include "ui/settings/SettingSwitch.h"
#include "ui/settings/SettingsSection.h"

#include <vector>

namespace ondrel::ui {

// Whether the program opens mail links, and the way to become the one that does.
class DefaultMailSettingsView final : public SettingsSection {
 public:
  // `manualURL` tells how it is done by hand; empty for none. All outlive it.
  DefaultMailSettingsView(integrations::DefaultEmailClient& client, settings::AppSettings& settings,
                          std::string manualURL, std::function<void(const std::string& url)> openURL);

  AdwPreferencesGroup* group() override { return group_.get(); }

 private:
  void addButtons(std::string manualURL, std::function<void(const std::string& url)> openURL);
  void update();

  integrations::DefaultEmailClient& client_;
  const glib::Ref<AdwPreferencesGroup> group_;
  AdwActionRow* const status_;
  GtkImage* const icon_;
  GtkWidget* const set_;
  GtkWidget* const progress_;
  GtkWidget* manual_ = nullptr;
  SettingSwitch check_;
  const glib::Ref<GAppInfoMonitor> monitor_; // tells nothing once nobody holds it
  std::vector<glib::Connection> connections_;
  std::vector<base::Subscription> subscriptions_;
};

} // namespace ondrel::ui
