#include "ui/settings/UISettingsView.h"

#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"

namespace ondrel::ui {

UISettingsView::UISettingsView(settings::AppSettings& settings, const std::string& displayName)
    : group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))), zoom_(settings) {
  namespace keys = settings::keys;
  const auto add = [this, &settings](settings::Key<bool> key, SettingSwitch::Texts texts) {
    adw_preferences_group_add(group_.get(), rows_.emplace_back(settings, key, std::move(texts)).row());
  };
  add(keys::showMenuBarExtra,
      {.title = displayName + " in the Menu Bar", .note = "Also shows the number of unread mails"});
  add(keys::hideOnLoseFocus, {.title = "Hide when losing focus"});
  add(keys::doHideWhenInComposeMode, {.title = "Even when in Compose"});
  const auto followHiding = [row = rows_.back().row(), &settings] {
    gtk_widget_set_sensitive(row, settings.get(keys::hideOnLoseFocus));
  };
  followHiding();
  hiding_ = settings.defaults().changed.subscribe([followHiding](const std::string&) { followHiding(); });
  add(keys::composeInNewWindow,
      {.title = "Compose email in separate window", .note = "Also by pressing the default shortcut 'c'"});
  add(keys::hideInternalLinks, {.title = "Only show external links on mouseover"});
  const auto tellAddress = [this, &settings] {
    rows_.back().setNote("Do not show links that start with " + settings.baseURL());
  };
  tellAddress();
  adw_preferences_group_add(group_.get(), zoom_.row());
  environment_ = settings.fastmailEnvironmentDidChange.subscribe(tellAddress);
}

} // namespace ondrel::ui
