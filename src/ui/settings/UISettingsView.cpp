#include "ui/settings/UISettingsView.h"

#include "base/Translation.h"
#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"
#include "ui/widgets/Widgets.h"

namespace ondrel::ui {

UISettingsView::UISettingsView(settings::AppSettings& settings, const std::string& displayName)
    : group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))), zoom_(settings) {
  namespace keys = settings::keys;
  const auto add = [this, &settings](settings::Key<bool> key, SettingSwitch::Texts texts) {
    adw_preferences_group_add(group_.get(), rows_.emplace_back(settings, key, std::move(texts)).row());
  };
  add(keys::showMenuBarExtra,
      // TRANSLATORS: an icon in the panel of the desktop
      {.title = base::trFormat("{} in the Menu Bar", displayName),
       .note = base::tr("Also shows the number of unread mails")});
  add(keys::hideOnLoseFocus, {.title = base::tr("Hide when losing focus")});
  // TRANSLATORS: hides the window when it loses the focus, even while a message is being written
  add(keys::doHideWhenInComposeMode, {.title = base::tr("Even when in Compose")});
  const auto followHiding = [row = rows_.back().row(), &settings] {
    setSensitive(row, settings.get(keys::hideOnLoseFocus));
  };
  followHiding();
  hiding_ = settings.defaults().changed.subscribe([followHiding](const std::string&) { followHiding(); });
  add(keys::composeInNewWindow, {.title = base::tr("Compose email in separate window"),
                                 .note = base::tr("Also by pressing the default shortcut 'c'")});
  add(keys::hideInternalLinks, {.title = base::tr("Only show external links on mouseover")});
  const auto tellAddress = [this, &settings] {
    // TRANSLATORS: an address
    rows_.back().setNote(base::trFormat("Do not show links that start with {}", settings.baseURL()));
  };
  tellAddress();
  adw_preferences_group_add(group_.get(), zoom_.row());
  environment_ = settings.fastmailEnvironmentDidChange.subscribe(tellAddress);
}

} // namespace ondrel::ui
