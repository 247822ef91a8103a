#include "ui/widgets/Widgets.h"

#include "ui/widgets/KeyNotation.h"

namespace ondrel::ui {

void setAccessibleLabel(GtkWidget* widget, const std::string& label) {
  // Rows name their controls as well, and both names would be read.
  gtk_accessible_reset_relation(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_RELATION_LABELLED_BY);
  gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL, label.c_str(), -1);
}

void setTooltip(GtkWidget* widget, const std::string& textWithKeySigns) {
  gtk_widget_set_tooltip_text(widget, withDesktopKeys(textWithKeySigns).c_str());
}

GtkWidget* wrappedLabel(const char* text) {
  auto* label = gtk_label_new(text);
  gtk_label_set_wrap(GTK_LABEL(label), TRUE);
  gtk_label_set_wrap_mode(GTK_LABEL(label), PANGO_WRAP_WORD_CHAR);
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  return label;
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

} // namespace ondrel::ui
