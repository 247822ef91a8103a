#include "ui/settings/EnvironmentSettingsView.h"

#include "base/Translation.h"
#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"
#include "ui/settings/SettingsRows.h"
#include "ui/widgets/Widgets.h"

namespace ondrel::ui {

namespace {

using settings::FastmailEnvironment;

} // namespace

EnvironmentSettingsView::EnvironmentSettingsView(settings::AppSettings& settings)
    : settings_(settings), group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))),
      row_(ADW_COMBO_ROW(adw_combo_row_new())), names_(nameChoices(row_)) {
  gtk_widget_set_name(GTK_WIDGET(row_), "environment");
  adw_preferences_row_set_use_underline(ADW_PREFERENCES_ROW(row_), TRUE);
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row_), base::tr("Fastmail _Version"));
  adw_action_row_set_subtitle(ADW_ACTION_ROW(row_),
                              base::tr("All open tabs will refresh and display email content."));
  adw_action_row_set_subtitle_lines(ADW_ACTION_ROW(row_), 0);
  setAccessibleLabel(GTK_WIDGET(row_), base::tr("Fastmail Version"));
  // In the order of FastmailEnvironment.
  // TRANSLATORS: the usual form of the service, which all people use
  const char* const titles[] = {base::tr("Production"),
                                // TRANSLATORS: the form of the service that tries what is new
                                base::tr("Beta"), nullptr};
  const auto model = glib::adopt(gtk_string_list_new(titles));
  adw_combo_row_set_model(row_, G_LIST_MODEL(model.get()));
  adw_preferences_group_add(group_.get(), GTK_WIDGET(row_));

  update();
  selection_ = glib::onNotify(row_, "selected", [this] { choose(); });
  settingChanges_ = settings_.defaults().changed.subscribe([this](const std::string& key) {
    if (key == settings::keys::fastmailEnvironment)
      update();
  });
}

void EnvironmentSettingsView::choose() {
  tellChoice(row_);
  const auto chosen = static_cast<FastmailEnvironment>(adw_combo_row_get_selected(row_));
  // What is stored may be anything that stands for production.
  if (!isUpdating_ && chosen != settings_.currentEnvironment())
    settings_.setEnvironment(chosen);
}

void EnvironmentSettingsView::update() {
  isUpdating_ = true;
  adw_combo_row_set_selected(row_, static_cast<guint>(settings_.currentEnvironment()));
  tellChoice(row_);
  isUpdating_ = false;
}

} // namespace ondrel::ui
