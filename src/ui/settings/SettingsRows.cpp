#include "ui/settings/SettingsRows.h"

#include "ui/widgets/Widgets.h"

#include <string>

namespace ondrel::ui {

namespace {

AdwActionRow* rowWith(const char* identifier, GtkWidget* control) {
  auto* row = ADW_ACTION_ROW(adw_action_row_new());
  gtk_widget_set_name(GTK_WIDGET(row), identifier);
  adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row), FALSE);
  adw_preferences_row_set_use_underline(ADW_PREFERENCES_ROW(row), TRUE);
  adw_action_row_set_title_lines(row, 0);
  adw_action_row_set_subtitle_lines(row, 0);
  gtk_widget_set_valign(control, GTK_ALIGN_CENTER);
  adw_action_row_add_suffix(row, control);
  adw_action_row_set_activatable_widget(row, control);
  return row;
}

} // namespace

AdwActionRow* switchRow(const char* identifier, GtkSwitch* control) {
  return rowWith(identifier, GTK_WIDGET(control));
}

AdwActionRow* fieldRow(const char* identifier, GtkEntry* field, int characters) {
  gtk_editable_set_width_chars(GTK_EDITABLE(field), characters);
  gtk_editable_set_max_width_chars(GTK_EDITABLE(field), characters);
  return rowWith(identifier, GTK_WIDGET(field));
}

AdwActionRow* linkRow(const char* title) {
  auto* row = ADW_ACTION_ROW(adw_action_row_new());
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), title);
  adw_action_row_add_suffix(row, gtk_image_new_from_icon_name("adw-external-link-symbolic"));
  gtk_list_box_row_set_activatable(GTK_LIST_BOX_ROW(row), TRUE);
  return row;
}

void setRowTitle(AdwActionRow* row, GtkWidget* control, std::string_view title) {
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), ("_" + std::string(title)).c_str());
  const std::string name(title.substr(0, title.find(':')));
  setAccessibleLabel(GTK_WIDGET(row), name);
  setAccessibleLabel(control, name);
}

void setRowSubtitle(AdwActionRow* row, std::string_view subtitle) {
  adw_action_row_set_subtitle(row, std::string(subtitle).c_str());
  setAccessibleDescription(GTK_WIDGET(row), std::string(subtitle));
}

void tellChoice(AdwComboRow* row) {
  auto* chosen = static_cast<GtkStringObject*>(adw_combo_row_get_selected_item(row));
  const char* note = adw_action_row_get_subtitle(ADW_ACTION_ROW(row));
  std::string text = chosen ? gtk_string_object_get_string(chosen) : "";
  if (note && *note)
    text += std::string(". ") + note;
  setAccessibleDescription(GTK_WIDGET(row), text);
}

glib::Connection nameChoices(AdwComboRow* row) {
  auto* factory = GTK_SIGNAL_LIST_ITEM_FACTORY(adw_combo_row_get_factory(row));
  return glib::connect<void(GtkSignalListItemFactory*, GtkListItem*)>(
      factory, "bind", [](GtkSignalListItemFactory*, GtkListItem* item) {
        if (auto* entry = gtk_widget_get_parent(gtk_list_item_get_child(item)))
          setAccessibleLabel(entry,
                             gtk_string_object_get_string(GTK_STRING_OBJECT(gtk_list_item_get_item(item))));
      });
}

} // namespace ondrel::ui
