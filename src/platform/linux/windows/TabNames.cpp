#include "platform/linux/windows/TabNames.h"

#include "base/Translation.h"
#include "platform/linux/glib/Ref.h"

#include <string_view>
#include <utility>

namespace ondrel::platform::windows {

namespace {

void setRole(const char* typeName, GtkAccessibleRole role) {
  const GType type = g_type_from_name(typeName);
  if (type && g_type_is_a(type, GTK_TYPE_WIDGET))
    gtk_widget_class_set_accessible_role(static_cast<GtkWidgetClass*>(g_type_class_ref(type)), role);
}

GtkWidget* labelIn(GtkWidget* widget) {
  if (GTK_IS_LABEL(widget))
    return widget;
  for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child))
    if (auto* label = labelIn(child))
      return label;
  return nullptr;
}

void nameTabsIn(GtkWidget* widget) {
  if (GTK_IS_BUTTON(widget) && gtk_widget_has_css_class(widget, "tab-close-button"))
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                   base::tr("Close Tab"), -1);
  if (std::string_view(G_OBJECT_TYPE_NAME(widget)) == "AdwTab") {
    const bool isSelected = (gtk_widget_get_state_flags(widget) & GTK_STATE_FLAG_SELECTED) != 0;
    gtk_accessible_update_state(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_STATE_SELECTED, isSelected, -1);
    if (auto* label = labelIn(widget))
      gtk_accessible_update_relation(GTK_ACCESSIBLE(widget), GTK_ACCESSIBLE_RELATION_LABELLED_BY, label,
                                     nullptr, -1);
  }
  for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child))
    nameTabsIn(child);
}

} // namespace

void giveTabsTheirRoles() {
  static bool isDone = false;
  if (std::exchange(isDone, true))
    return;
  // The types are the toolkit's own: they are known once it has made a tab.
  const auto bar = glib::share(adw_tab_bar_new());
  const auto view = glib::share(adw_tab_view_new());
  adw_tab_bar_set_view(bar.get(), view.get());
  adw_tab_view_append(view.get(), adw_bin_new());
  setRole("AdwTab", GTK_ACCESSIBLE_ROLE_TAB);
  setRole("AdwTabBox", GTK_ACCESSIBLE_ROLE_TAB_LIST);
}

void nameTabs(AdwTabBar* bar) {
  nameTabsIn(GTK_WIDGET(bar));
}

} // namespace ondrel::platform::windows
