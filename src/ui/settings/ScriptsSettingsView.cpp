#include "ui/settings/ScriptsSettingsView.h"

#include "base/Translation.h"
#include "integrations/ScriptsManager.h"
#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"
#include "ui/settings/SettingsRows.h"
#include "ui/widgets/Widgets.h"

namespace ondrel::ui {

namespace {

namespace keys = settings::keys;

// One that is on can be turned off, whatever is there.
void offer(SettingSwitch& setting, bool isOn, bool hasFiles, const char* kind) {
  setSensitive(setting.row(), isOn || hasFiles);
  // TRANSLATORS: "There are no .js files in the Scripts folder"
  setting.setNote(hasFiles ? "" : base::trFormat("There are no {} files in the Scripts folder", kind));
}

} // namespace

ScriptsSettingsView::ScriptsSettingsView(integrations::ScriptsManager& scripts,
                                         settings::AppSettings& settings)
    : scripts_(scripts), settings_(settings),
      group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))) {
  adw_preferences_group_set_title(group_.get(), base::tr("Javascript and CSS injection"));
  if (scripts_.folder())
    addRows();
  else
    adw_preferences_group_set_description(
        group_.get(),
        base::tr("Your home has no documents folder, in which scripts and style sheets would be kept."));
}

void ScriptsSettingsView::addRows() {
  runJS_.emplace(settings_, keys::runJS, SettingSwitch::Texts{.title = base::tr("Run JavaScript")});
  injectCSS_.emplace(settings_, keys::injectCSS, SettingSwitch::Texts{.title = base::tr("Inject CSS")});
  for (const auto* setting : {&*runJS_, &*injectCSS_})
    adw_preferences_group_add(group_.get(), setting->row());
  addRow(linkRow(base::tr("Open the Scripts folder")), "open-scripts",
         base::tr("js files in this folder run at startup"),
         [](ScriptsSettingsView& view) { view.scripts_.openScriptsFolder(); });
  auto* runNow = ADW_ACTION_ROW(adw_action_row_new());
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(runNow), base::tr("Run now"));
  adw_action_row_add_suffix(runNow, gtk_image_new_from_icon_name("media-playback-start-symbolic"));
  gtk_list_box_row_set_activatable(GTK_LIST_BOX_ROW(runNow), TRUE);
  runNow_ = addRow(runNow, "run-scripts", base::tr("The js files, in the tab in front"),
                   [](ScriptsSettingsView& view) { view.scripts_.runScriptsInActiveWebView(); });

  update();
  subscriptions_.push_back(scripts_.hasScripts.observe([this] { update(); }));
  subscriptions_.push_back(scripts_.hasCSS.observe([this] { update(); }));
  subscriptions_.push_back(settings_.defaults().changed.subscribe([this](const std::string&) { update(); }));
  subscriptions_.push_back(scripts_.follow());
}

GtkWidget* ScriptsSettingsView::addRow(AdwActionRow* row, const char* identifier, const char* note,
                                       void (*act)(ScriptsSettingsView&)) {
  gtk_widget_set_name(GTK_WIDGET(row), identifier);
  setRowSubtitle(row, note);
  connections_.push_back(
      glib::connect<void(AdwActionRow*)>(row, "activated", [this, act](AdwActionRow*) { act(*this); }));
  adw_preferences_group_add(group_.get(), GTK_WIDGET(row));
  return GTK_WIDGET(row);
}

void ScriptsSettingsView::update() {
  offer(*runJS_, settings_.get(keys::runJS), *scripts_.hasScripts, ".js");
  offer(*injectCSS_, settings_.get(keys::injectCSS), *scripts_.hasCSS, ".css");
  setSensitive(runNow_, *scripts_.hasScripts);
}

} // namespace ondrel::ui
