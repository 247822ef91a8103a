#include "ui/settings/ZoomSettingRow.h"

#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"
#include "ui/settings/SettingsRows.h"
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
    : settings_(settings),
      control_(GTK_DROP_DOWN(gtk_drop_down_new(G_LIST_MODEL(g_object_ref(choices().get())), nullptr))),
      row_(choiceRow(std::string(keys::defaultPageZoom.name).c_str(), control_)) {
  setRowTitle(row_, GTK_WIDGET(control_), "Default zoom");
  setRowSubtitle(row_, "Of new tabs and windows");
  update();
  chosen_ = glib::onNotify(control_, "selected", [this] {
    const auto selected = static_cast<int>(gtk_drop_down_get_selected(control_));
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
  gtk_drop_down_set_selected(
      control_, static_cast<guint>((percent(settings_.defaultPageZoom()) - smallest()) / percentStep));
  isUpdating_ = false;
}

} // namespace ondrel::ui
