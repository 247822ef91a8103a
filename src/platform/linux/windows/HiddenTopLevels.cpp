#include "platform/linux/windows/HiddenTopLevels.h"

#include <algorithm>
#include <ranges>
#include <utility>

namespace ondrel::platform::windows {

void HiddenTopLevels::hideAll(const std::vector<GtkWindow*>& frontToBack) {
  if (std::exchange(hidden_, true))
    return;
  // Who comes last is in front.
  for (auto* window : frontToBack | std::views::reverse)
    if (gtk_widget_get_visible(GTK_WIDGET(window)))
      widgets_.push_back(std::make_unique<glib::WeakRef<GtkWidget>>(GTK_WIDGET(window)));
  const auto topLevels = glib::share(gtk_window_get_toplevels());
  for (guint i = 0; i < g_list_model_get_n_items(topLevels.get()); ++i) {
    const auto widget = glib::adopt(GTK_WIDGET(g_list_model_get_item(topLevels.get(), i)));
    if (gtk_widget_get_visible(widget.get()) &&
        std::ranges::find(frontToBack, GTK_WINDOW(widget.get())) == frontToBack.end())
      widgets_.push_back(std::make_unique<glib::WeakRef<GtkWidget>>(widget.get()));
  }
  for (const auto& weak : widgets_)
    if (const auto widget = weak->lock())
      gtk_widget_set_visible(widget.get(), FALSE);
}

void HiddenTopLevels::showAgain() {
  if (!std::exchange(hidden_, false))
    return;
  for (const auto& weak : std::exchange(widgets_, {}))
    if (const auto widget = weak->lock())
      gtk_widget_set_visible(widget.get(), TRUE);
}

void HiddenTopLevels::forget(GtkWindow* window) {
  std::erase_if(widgets_, [window](const auto& weak) { return weak->lock().get() == GTK_WIDGET(window); });
}

} // namespace ondrel::platform::windows
