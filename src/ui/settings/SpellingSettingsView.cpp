#include "ui/settings/SpellingSettingsView.h"

#include "integrations/SpellingSettings.h"
#include "platform/desktop/SpellChecker.h"
#include "settings/AppSettings.h"
#include "ui/settings/SettingsRows.h"

#include <algorithm>

namespace ondrel::ui {

SpellingSettingsView::SpellingSettingsView(integrations::SpellingSettings& model,
                                           settings::AppSettings& settings)
    : model_(model), settings_(settings),
      group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))),
      check_(settings, settings::keys::checkSpelling, {.title = "Check Spelling While Typing"}) {
  adw_preferences_group_set_title(group_.get(), "Spelling");
  adw_preferences_group_add(group_.get(), check_.row());
  addLanguages();
  changes_ = model_.changed.subscribe([this] { update(); });
  update();
}

void SpellingSettingsView::addLanguages() {
  const auto dictionaries = model_.dictionaries();
  if (dictionaries.empty()) {
    check_.setNote("No dictionary is installed. Install one for each of your languages, as the package "
                   "hunspell-en-us, and open this window again.");
    gtk_widget_set_sensitive(check_.row(), FALSE);
    return;
  }
  languages_ = adw_expander_row_new();
  gtk_widget_set_name(languages_, "spelling-languages");
  adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(languages_), FALSE);
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(languages_), "Languages");
  for (const auto& [tag, name] : dictionaries) {
    auto* control = GTK_SWITCH(gtk_switch_new());
    auto* row = switchRow(("spelling-" + tag).c_str(), control);
    setRowTitle(row, GTK_WIDGET(control), name);
    controls_.push_back({tag, control});
    turned_.push_back(glib::onNotify(control, "active", [this, tag, control] {
      if (!isUpdating_)
        model_.setChecked(tag, gtk_switch_get_active(control) != FALSE);
    }));
    adw_expander_row_add_row(ADW_EXPANDER_ROW(languages_), GTK_WIDGET(row));
  }
  adw_preferences_group_add(group_.get(), languages_);
}

void SpellingSettingsView::update() {
  if (!languages_)
    return;
  isUpdating_ = true;
  const auto checked = model_.languages();
  for (const auto& [tag, control] : controls_)
    gtk_switch_set_active(control, std::ranges::find(checked, tag) != checked.end());
  gtk_widget_set_sensitive(languages_, settings_.get(settings::keys::checkSpelling));
  adw_expander_row_set_subtitle(ADW_EXPANDER_ROW(languages_),
                                checked.empty() ? "None of them is checked" : "");
  isUpdating_ = false;
}

} // namespace ondrel::ui
