#include "ui/settings/DefaultMailSettingsView.h"

#include "base/Translation.h"
#include "integrations/DefaultEmailClient.h"
#include "ui/settings/SettingsRows.h"
#include "ui/widgets/Widgets.h"

#include <gio/gio.h>

#include <utility>

namespace ondrel::ui {

DefaultMailSettingsView::DefaultMailSettingsView(integrations::DefaultEmailClient& client,
                                                 settings::AppSettings& settings, std::string manualURL,
                                                 std::function<void(const std::string& url)> openURL)
    : client_(client), group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))),
      status_(ADW_ACTION_ROW(adw_action_row_new())), icon_(GTK_IMAGE(gtk_image_new())),
      set_(mnemonicButton(base::tr("_Set as Default"))), progress_(gtk_spinner_new()),
      check_(settings, settings::keys::defaultClientCheck,
             {.title = base::tr("Check for being the default email app at startup"),
              .noteWhileOn = base::tr("Starts checking on next start")}),
      monitor_(glib::adopt(g_app_info_monitor_get())) {
  gtk_widget_set_name(GTK_WIDGET(status_), "default-mail");
  adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(status_), FALSE);
  adw_action_row_set_title_lines(status_, 0);
  adw_action_row_set_subtitle_lines(status_, 0);
  adw_action_row_add_prefix(status_, GTK_WIDGET(icon_));
  addButtons(std::move(manualURL), std::move(openURL));
  adw_preferences_group_add(group_.get(), GTK_WIDGET(status_));
  if (manual_)
    adw_preferences_group_add(group_.get(), manual_);
  adw_preferences_group_add(group_.get(), check_.row());

  client_.update();
  update();
  const auto follow = [this] { update(); };
  subscriptions_.push_back(client_.isDefault.observe(follow));
  subscriptions_.push_back(client_.isSettingDefault.observe(follow));
  subscriptions_.push_back(client_.setDefaultError.observe(follow));
  // The desktop's own settings, say, have chosen another one.
  connections_.push_back(glib::connect<void(GAppInfoMonitor*)>(
      monitor_.get(), "changed", [this](GAppInfoMonitor*) { client_.update(); }));
}

void DefaultMailSettingsView::addButtons(std::string manualURL,
                                         std::function<void(const std::string& url)> openURL) {
  gtk_widget_set_name(set_, "set-default-mail");
  wrapText(set_);
  gtk_spinner_set_spinning(GTK_SPINNER(progress_), TRUE);
  setAccessibleLabel(progress_, base::tr("Asking the desktop"));
  connections_.push_back(
      glib::connect<void(GtkButton*)>(set_, "clicked", [this](GtkButton*) { client_.setAsDefault(); }));
  for (auto* widget : {progress_, set_}) {
    gtk_widget_set_valign(widget, GTK_ALIGN_CENTER);
    adw_action_row_add_suffix(status_, widget);
  }
  if (manualURL.empty())
    return;
  manual_ = GTK_WIDGET(linkRow(base::tr("Set it manually instead")));
  connections_.push_back(glib::connect<void(AdwActionRow*)>(
      manual_, "activated",
      [openURL = std::move(openURL), url = std::move(manualURL)](AdwActionRow*) { openURL(url); }));
}

void DefaultMailSettingsView::update() {
  const bool isDefault = *client_.isDefault;
  const auto& name = client_.programInfo().displayName;
  const auto title = isDefault ? base::trFormat("{} is your default email app", name)
                               : base::trFormat("{} is not your default email app", name);
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(status_), title.c_str());
  gtk_image_set_from_icon_name(icon_, isDefault ? "emblem-ok-symbolic" : "dialog-warning-symbolic");
  setRowSubtitle(status_, client_.setDefaultError->value_or(""));
  gtk_widget_set_visible(set_, !isDefault && !*client_.isSettingDefault);
  gtk_widget_set_visible(progress_, *client_.isSettingDefault);
  if (manual_)
    gtk_widget_set_visible(manual_, !isDefault);
}

} // namespace ondrel::ui
