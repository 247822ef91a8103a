#include "ui/settings/ZoomSettingRow.h"

#include "base/Translation.h"
#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"
#include "ui/settings/SettingsRows.h"
#include "ui/widgets/Widgets.h"
#include "ui/widgets/ZoomText.h"

#include <cmath>
#include <string>

namespace ondrel::ui {

namespace {

namespace keys = settings::keys;

constexpr int percentStep = 5; // a step of the zoom controls

int percent(double zoom) {
  return static_cast<int>(std::lround(zoom * 100));
}

int smallest() {
  return percent(keys::smallestDefaultZoom);
}

glib::Ref<GtkStringList> choices() {
  auto list = glib::adopt(gtk_string_list_new(nullptr));
  for (int each = smallest(); each <= percent(keys::largestDefaultZoom); each += percentStep)
    gtk_string_list_append(list.get(), zoomText(each / 100.0).c_str());
  return list;
}

} // namespace

ZoomSettingRow::ZoomSettingRow(settings::AppSettings& settings)
    : settings_(settings), row_(ADW_COMBO_ROW(adw_combo_row_new())), names_(nameChoices(row_)) {
  gtk_widget_set_name(row(), std::string(keys::defaultPageZoom.name).c_str());
  adw_combo_row_set_model(row_, G_LIST_MODEL(choices().get()));
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row_), base::tr("Default zoom"));
  setRowSubtitle(ADW_ACTION_ROW(row_), base::tr("Of new tabs and windows"));
  setAccessibleLabel(row(), base::tr("Default zoom"));
  update();
  chosen_ = glib::onNotify(row_, "selected", [this] {
    tellChoice(row_);
    const auto selected = static_cast<int>(adw_combo_row_get_selected(row_));
    if (!isUpdating_)
      settings_.set(keys::defaultPageZoom, (smallest() + selected * percentStep) / 100.0);
  });
  changes_ = settings_.defaults().changed.subscribe([this](const std::string& changed) {
    if (changed == keys::defaultPageZoom.name)
      update();
  });
}

void ZoomSettingRow::update() {
  isUpdating_ = true;
  adw_combo_row_set_selected(
      row_, static_cast<guint>((percent(settings_.defaultPageZoom()) - smallest()) / percentStep));
  tellChoice(row_);
  isUpdating_ = false;
}

} // namespace ondrel::ui
