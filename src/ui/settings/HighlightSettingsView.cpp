#include "ui/settings/HighlightSettingsView.h"

#include "base/Translation.h"
#include "ui/settings/SettingsRows.h"

#include <string>

namespace ondrel::ui {

namespace {

constexpr int nameCharacters = 18;

} // namespace

HighlightSettingsView::HighlightSettingsView(settings::AppSettings& settings, jmap::MailQueries& mail)
    : model_(settings, mail), group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))),
      enabled_(GTK_SWITCH(gtk_switch_new())), enabledRow_(switchRow("highlight-tag", enabled_)),
      name_(GTK_ENTRY(gtk_entry_new())), nameRow_(fieldRow("highlight-tag-name", name_, nameCharacters)) {
  adw_preferences_group_set_title(group_.get(), base::tr("Highlights"));
  gtk_entry_set_placeholder_text(name_, std::string(model_.namePrompt()).c_str());
  for (auto* row : {enabledRow_, nameRow_})
    adw_preferences_group_add(group_.get(), GTK_WIDGET(row));

  update();
  changes_ = model_.changed.subscribe([this] { update(); });
  connections_.push_back(glib::onNotify(enabled_, "active", [this] {
    if (!isUpdating_)
      model_.setEnabled(gtk_switch_get_active(enabled_) != FALSE);
  }));
  connections_.push_back(glib::connect<void(GtkEditable*)>(name_, "changed", [this](GtkEditable* name) {
    if (!isUpdating_)
      model_.setTagName(gtk_editable_get_text(name));
  }));
}

void HighlightSettingsView::update() {
  isUpdating_ = true;
  setRowTitle(enabledRow_, GTK_WIDGET(enabled_), model_.enableText());
  setRowTitle(nameRow_, GTK_WIDGET(name_), model_.nameText());
  setRowSubtitle(nameRow_, model_.footnote());
  gtk_switch_set_active(enabled_, model_.enabled());
  gtk_widget_set_visible(GTK_WIDGET(nameRow_), model_.enabled());
  // The place of the cursor is kept while one types.
  if (const auto name = model_.tagName(); name != gtk_editable_get_text(GTK_EDITABLE(name_)))
    gtk_editable_set_text(GTK_EDITABLE(name_), name.c_str());
  isUpdating_ = false;
}

} // namespace ondrel::ui
