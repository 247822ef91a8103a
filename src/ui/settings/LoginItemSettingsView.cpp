#include "ui/settings/LoginItemSettingsView.h"

#include "base/Translation.h"
#include "integrations/LoginItemManager.h"
#include "ui/settings/SettingsRows.h"

namespace ondrel::ui {

LoginItemSettingsView::LoginItemSettingsView(integrations::LoginItemManager& model)
    : model_(model), group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))),
      control_(GTK_SWITCH(gtk_switch_new())) {
  auto* row = switchRow("launch-at-login", control_);
  setRowTitle(row, GTK_WIDGET(control_), base::tr("Launch at Login"));
  setRowSubtitle(row, base::tr("Watches for new mail, without a window until you open one"));
  adw_preferences_group_add(group_.get(), GTK_WIDGET(row));
  update();
  subscriptions_.push_back(model_.isEnabled.observe([this] { update(); }));
  // A wish that couldn't be met changes nothing but the switch.
  subscriptions_.push_back(model_.didToggle.subscribe([this] { update(); }));
  turned_ = glib::onNotify(control_, "active", [this] {
    if (!isUpdating_)
      model_.setEnabled(gtk_switch_get_active(control_) != FALSE);
  });
}

void LoginItemSettingsView::update() {
  isUpdating_ = true;
  gtk_switch_set_active(control_, *model_.isEnabled);
  isUpdating_ = false;
}

} // namespace ondrel::ui
