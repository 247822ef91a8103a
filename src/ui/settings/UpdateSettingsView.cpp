#include "ui/settings/UpdateSettingsView.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "integrations/UpdateManager.h"
#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"
#include "ui/settings/SettingsRows.h"
#include "ui/widgets/Widgets.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace ondrel::ui {

namespace {

namespace keys = settings::keys;

struct Interval {
  const char* label;
  double seconds;
};

constexpr std::array<Interval, 4> intervals = {
    // TRANSLATORS: how often the program looks for a new version
    {{base::trMark("Hourly"), 3600},
     {base::trMark("Daily"), 86400},
     {base::trMark("Weekly"), 604800},
     {base::trMark("Monthly"), 2592000}}};

// Any number may be in the file.
guint nearestTo(double seconds) {
  const auto nearest = std::ranges::min_element(
      intervals, {}, [&](const Interval& each) { return std::abs(each.seconds - seconds); });
  return static_cast<guint>(nearest - intervals.begin());
}

} // namespace

UpdateSettingsView::UpdateSettingsView(integrations::UpdateManager& manager, settings::AppSettings& settings)
    : manager_(manager), settings_(settings),
      group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))),
      checks_(settings, keys::automaticallyChecksForUpdates,
              {.title = base::tr("Automatically check for updates")}),
      downloads_(settings, keys::automaticallyDownloadsUpdates,
                 {.title = base::tr("Automatically download updates"),
                  .note = base::tr("They are installed when you say so")}),
      interval_(ADW_COMBO_ROW(adw_combo_row_new())), names_(nameChoices(interval_)) {
  makeInterval();
  adw_preferences_group_add(group_.get(), checks_.row());
  adw_preferences_group_add(group_.get(), downloads_.row());
  adw_preferences_group_add(group_.get(), GTK_WIDGET(interval_));
  update();
  subscriptions_.push_back(manager_.source.observe([this] { update(); }));
  subscriptions_.push_back(settings_.defaults().changed.subscribe([this](const std::string& key) {
    if (key == keys::automaticallyChecksForUpdates.name || key == keys::updateCheckInterval.name ||
        key == keys::lastUpdateCheckDate)
      update();
  }));
}

void UpdateSettingsView::makeInterval() {
  gtk_widget_set_name(GTK_WIDGET(interval_), std::string(keys::updateCheckInterval.name).c_str());
  adw_preferences_row_set_use_underline(ADW_PREFERENCES_ROW(interval_), TRUE);
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(interval_), base::tr("Update check in_terval"));
  setAccessibleLabel(GTK_WIDGET(interval_), base::tr("Update check interval"));
  const auto model = glib::adopt(gtk_string_list_new(nullptr));
  for (const auto& each : intervals)
    gtk_string_list_append(model.get(), base::tr(each.label));
  adw_combo_row_set_model(interval_, G_LIST_MODEL(model.get()));
  chosen_ = glib::onNotify(interval_, "selected", [this] { choose(); });
}

void UpdateSettingsView::choose() {
  tellChoice(interval_);
  if (!isUpdating_)
    settings_.defaults().set(keys::updateCheckInterval.name,
                             intervals.at(adw_combo_row_get_selected(interval_)).seconds);
}

void UpdateSettingsView::update() {
  isUpdating_ = true;
  gtk_widget_set_visible(GTK_WIDGET(group_.get()),
                         *manager_.source == platform::UpdateSource::packageService);
  // TRANSLATORS: a date and time, or a word as "Never"
  const auto title = base::trFormat("Update settings — last check: {}", manager_.lastUpdateCheckText());
  adw_preferences_group_set_title(group_.get(), // which takes it for markup
                                  base::escapedMarkup(title).c_str());
  adw_combo_row_set_selected(interval_, nearestTo(settings_.get(keys::updateCheckInterval)));
  tellChoice(interval_);
  setSensitive(GTK_WIDGET(interval_), settings_.get(keys::automaticallyChecksForUpdates));
  isUpdating_ = false;
}

} // namespace ondrel::ui
