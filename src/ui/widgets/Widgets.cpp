#include "ui/widgets/Widgets.h"

#include "base/Translation.h"
#include "ui/widgets/KeyNotation.h"

#include <string_view>

namespace ondrel::ui {

void setAccessibleDescription(GtkWidget* widget, const std::string& text) {
  gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, text.c_str(),
                                 -1);
}

void setAccessibleLabel(GtkWidget* widget, const std::string& label) {
  // Rows name their controls as well, and both names would be read.
  gtk_accessible_reset_relation(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_RELATION_LABELLED_BY);
  gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL, label.c_str(), -1);
}

bool readsRightToLeft() {
  return gtk_widget_get_default_direction() == GTK_TEXT_DIR_RTL;
}

namespace {

constexpr std::string_view searchIcon = "edit-find-symbolic";

void tellSensitivity(GtkWidget* widget) {
  gtk_accessible_update_state(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_STATE_DISABLED,
                              gtk_widget_is_sensitive(widget) ? FALSE : TRUE, -1);
  for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child))
    tellSensitivity(child);
}

// Of the first label in it; else what its tooltip says.
std::string shownText(GtkWidget* widget) {
  if (GTK_IS_LABEL(widget))
    return gtk_label_get_text(GTK_LABEL(widget));
  for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child))
    if (auto text = shownText(child); !text.empty())
      return text;
  const char* tip = gtk_widget_get_tooltip_text(widget);
  return tip ? tip : "";
}

} // namespace

void nameToolkitControls(GtkWidget* window) {
  for (auto* child = gtk_widget_get_first_child(window); child; child = gtk_widget_get_next_sibling(child)) {
    const char* icon = GTK_IS_BUTTON(child) ? gtk_button_get_icon_name(GTK_BUTTON(child)) : nullptr;
    const bool isSearch = GTK_IS_SEARCH_ENTRY(child) || std::string_view(icon ? icon : "") == searchIcon;
    const std::string name = isSearch ? base::tr("Search") : GTK_IS_BUTTON(child) ? shownText(child) : "";
    if (name.empty())
      nameToolkitControls(child);
    else
      setAccessibleLabel(child, name);
  }
}

void setSensitive(GtkWidget* widget, bool isSensitive) {
  gtk_widget_set_sensitive(widget, isSensitive);
  tellSensitivity(widget);
}

GtkWidget* mnemonicButton(const char* label) {
  auto* button = gtk_button_new_with_mnemonic(label);
  setAccessibleLabel(button, gtk_label_get_text(GTK_LABEL(gtk_button_get_child(GTK_BUTTON(button)))));
  return button;
}

void setPlaceholder(GtkWidget* entry, const char* text) {
  g_object_set(entry, "placeholder-text", text, "tooltip-text", text, nullptr);
}

void setTooltip(GtkWidget* widget, const std::string& textWithKeySigns) {
  gtk_widget_set_tooltip_text(widget, withDesktopKeys(textWithKeySigns).c_str());
}

GtkWidget* wrappedLabel(const char* text) {
  auto* label = gtk_label_new(text);
  gtk_label_set_wrap(GTK_LABEL(label), TRUE);
  gtk_label_set_wrap_mode(GTK_LABEL(label), PANGO_WRAP_WORD_CHAR);
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  // Hosts, addresses and file names are broken anywhere: a hyphen would look like a part of them.
  auto* attributes = pango_attr_list_new();
  pango_attr_list_insert(attributes, pango_attr_insert_hyphens_new(FALSE));
  gtk_label_set_attributes(GTK_LABEL(label), attributes);
  pango_attr_list_unref(attributes);
  return label;
}

glib::Connection tipWhereCut(GtkWidget* label) {
  gtk_widget_set_has_tooltip(label, TRUE);
  return glib::connect<gboolean(GtkWidget*, int, int, gboolean, GtkTooltip*)>(
      label, "query-tooltip", [](GtkWidget* widget, int, int, gboolean, GtkTooltip* tooltip) -> gboolean {
        auto* shown = GTK_LABEL(widget);
        gtk_tooltip_set_text(tooltip, gtk_label_get_text(shown));
        return pango_layout_is_ellipsized(gtk_label_get_layout(shown));
      });
}

bool giveFocus(GtkWidget* widget) {
  // The toolkit would give it to what nobody can see, too.
  if (!gtk_widget_get_visible(widget))
    return false;
  if (gtk_widget_grab_focus(widget))
    return true;
  for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child))
    if (giveFocus(child))
      return true;
  return false;
}

GtkWidget* toolbarButton(const char* identifier, const char* icon, const std::string& label,
                         const std::string& tooltip) {
  auto* button = gtk_button_new_from_icon_name(icon);
  gtk_widget_set_name(button, identifier);
  gtk_widget_set_focus_on_click(button, FALSE);
  setAccessibleLabel(button, label);
  setTooltip(button, tooltip);
  return button;
}

void wrapText(GtkWidget* button) {
  if (GTK_IS_LABEL(button)) {
    gtk_label_set_ellipsize(GTK_LABEL(button), PANGO_ELLIPSIZE_NONE);
    gtk_label_set_wrap(GTK_LABEL(button), TRUE);
    gtk_label_set_wrap_mode(GTK_LABEL(button), PANGO_WRAP_WORD_CHAR);
    // On one line where there is room.
    gtk_label_set_natural_wrap_mode(GTK_LABEL(button), GTK_NATURAL_WRAP_NONE);
    gtk_label_set_justify(GTK_LABEL(button), GTK_JUSTIFY_CENTER);
  }
  for (auto* child = gtk_widget_get_first_child(button); child; child = gtk_widget_get_next_sibling(child))
    wrapText(child);
}

} // namespace ondrel::ui
