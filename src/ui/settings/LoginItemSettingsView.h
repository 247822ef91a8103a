#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"
#include "ui/settings/SettingsSection.h"

#include <vector>

namespace ondrel::ui {

// Whether the desktop starts the program when the user signs in.
class LoginItemSettingsView final : public SettingsSection {
 public:
  // The model outlives it.
  explicit LoginItemSettingsView(integrations::LoginItemManager& model);

  AdwPreferencesGroup* group() override { return group_.get(); }

 private:
  void update();

  integrations::LoginItemManager& model_;
  const glib::Ref<AdwPreferencesGroup> group_;
  GtkSwitch* const control_;
  bool isUpdating_ = false;
  glib::Connection turned_;
  std::vector<base::Subscription> subscriptions_;
};

} // namespace ondrel::ui
