#include "ui/settings/SpellingSettingsView.h"

#include "base/Translation.h"
#include "integrations/SpellingSettings.h"
#include "platform/desktop/SpellChecker.h"
#include "settings/AppSettings.h"
#include "ui/settings/SettingsRows.h"
#include "ui/widgets/Widgets.h"

#include <algorithm>

namespace ondrel::ui {

SpellingSettingsView::SpellingSettingsView(integrations::SpellingSettings& model,
                                           settings::AppSettings& settings)
    : model_(model), settings_(settings),
      group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))),
      check_(settings, settings::keys::checkSpelling, {.title = base::tr("Check Spelling While Typing")}) {
  adw_preferences_group_set_title(group_.get(), base::tr("Spelling"));
  adw_preferences_group_add(group_.get(), check_.row());
  addLanguages();
  changes_ = model_.changed.subscribe([this] { update(); });
  update();
}

void SpellingSettingsView::addLanguages() {
  const auto dictionaries = model_.dictionaries();
  if (dictionaries.empty()) {
    check_.setNote(
        base::tr("No dictionary is installed. Install one for each of your languages, as the package "
                 "hunspell-en-us, and open this window again."));
    setSensitive(check_.row(), false);
    return;
  }
  languages_ = adw_expander_row_new();
  gtk_widget_set_name(languages_, "spelling-languages");
  adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(languages_), FALSE);
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(languages_), base::tr("Languages"));
  setAccessibleLabel(languages_, base::tr("Languages"));
  tellExpansion();
  turned_.push_back(glib::onNotify(languages_, "expanded", [this] { tellExpansion(); }));
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

// The toolkit doesn't say so to screen readers.
void SpellingSettingsView::tellExpansion() {
  gtk_accessible_update_state(GTK_ACCESSIBLE(languages_), GTK_ACCESSIBLE_STATE_EXPANDED,
                              adw_expander_row_get_expanded(ADW_EXPANDER_ROW(languages_)), -1);
}

void SpellingSettingsView::update() {
  if (!languages_)
    return;
  isUpdating_ = true;
  const auto checked = model_.languages();
  for (const auto& [tag, control] : controls_)
    gtk_switch_set_active(control, std::ranges::find(checked, tag) != checked.end());
  setSensitive(languages_, settings_.get(settings::keys::checkSpelling));
  adw_expander_row_set_subtitle(ADW_EXPANDER_ROW(languages_),
                                // TRANSLATORS: "them": the languages, in which the spelling is checked
                                checked.empty() ? base::tr("None of them is checked") : "");
  isUpdating_ = false;
}

} // namespace ondrel::ui
