#include "ui/commands/PaneFocus.h"

#include "ui/widgets/Widgets.h"

#include <adwaita.h>

#include <algorithm>
#include <vector>

namespace ondrel::ui {

namespace {

using Panes = std::vector<GtkWidget*>;

void collectPanes(GtkWidget* widget, Panes& panes) {
  if (ADW_IS_HEADER_BAR(widget) || ADW_IS_TAB_BAR(widget)) {
    panes.push_back(widget);
  } else if (ADW_IS_TAB_VIEW(widget)) {
    if (auto* page = adw_tab_view_get_selected_page(ADW_TAB_VIEW(widget)))
      panes.push_back(adw_tab_page_get_child(page));
  } else {
    for (auto* child = gtk_widget_get_first_child(widget); child; child = gtk_widget_get_next_sibling(child))
      collectPanes(child, panes);
  }
}

bool takesFocus(GtkWidget* pane) {
  // A bar of one tab is folded away, with the tab in it.
  if (!gtk_widget_get_mapped(pane) || gtk_widget_get_height(pane) == 0)
    return false;
  const bool isBar = ADW_IS_HEADER_BAR(pane) || ADW_IS_TAB_BAR(pane);
  return isBar ? gtk_widget_child_focus(pane, GTK_DIR_TAB_FORWARD) != FALSE : giveFocus(pane);
}

} // namespace

void focusPane(GtkWindow* window, int step) {
  Panes panes;
  if (window)
    collectPanes(GTK_WIDGET(window), panes);
  if (panes.empty())
    return;
  const auto count = static_cast<int>(panes.size());
  auto* focus = gtk_window_get_focus(window);
  const auto current = std::ranges::find_if(panes, [focus](GtkWidget* pane) {
    return focus && (focus == pane || gtk_widget_is_ancestor(focus, pane));
  });
  // Where nothing has the keyboard, the page is the one to come from.
  const int from = current == panes.end() ? count - 1 : static_cast<int>(current - panes.begin());
  for (int i = 1; i < count; ++i)
    if (takesFocus(panes.at(static_cast<std::size_t>((from + i * step + i * count) % count))))
      break;
  gtk_window_set_focus_visible(window, TRUE);
}

} // namespace ondrel::ui
