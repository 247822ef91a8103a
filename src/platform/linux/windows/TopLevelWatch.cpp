#include "platform/linux/windows/TopLevelWatch.h"

#include <utility>

namespace ondrel::platform::windows {

namespace {

// GTK 4.8 leaves one handler of a destroyed window connected to the window's surface, which lives on for a
// while: an event of the X server that was under way then calls it with the dead window.
void disconnectFromSurface(GtkWindow* window) {
  auto* surface = gtk_native_get_surface(GTK_NATIVE(window));
  if (!surface)
    return;
  constexpr auto bySignalAndData = static_cast<GSignalMatchType>(G_SIGNAL_MATCH_ID | G_SIGNAL_MATCH_DATA);
  g_signal_handlers_disconnect_matched(surface, bySignalAndData,
                                       g_signal_lookup("compute-size", GDK_TYPE_TOPLEVEL), 0, nullptr,
                                       nullptr, window);
}

} // namespace

TopLevelWatch::TopLevelWatch(std::function<void()> changed)
    : changed_(std::move(changed)), topLevels_(glib::share(gtk_window_get_toplevels())) {
  listConnection_ = glib::connect<void(GListModel*, guint, guint, guint)>(
      topLevels_.get(), "items-changed", [this](GListModel*, guint, guint, guint) {
        follow();
        changed_();
      });
  follow();
}

GtkWindow* TopLevelWatch::active() const {
  // The one that gets the keyboard may tell before the one that loses it.
  // One that is being destroyed is out of the list and still says that it is active.
  const auto last = lastActivated_.lock();
  if (last && followed_.contains(last.get()) && gtk_window_is_active(last.get()))
    return last.get(); // the toolkit keeps it
  for (guint i = 0; i < g_list_model_get_n_items(topLevels_.get()); ++i) {
    const auto window = glib::adopt(GTK_WINDOW(g_list_model_get_item(topLevels_.get(), i)));
    if (gtk_window_is_active(window.get()))
      return window.get(); // the list keeps it
  }
  return nullptr;
}

void TopLevelWatch::follow() {
  auto before = std::exchange(followed_, {});
  for (guint i = 0; i < g_list_model_get_n_items(topLevels_.get()); ++i) {
    const auto window = glib::adopt(GTK_WINDOW(g_list_model_get_item(topLevels_.get(), i)));
    if (auto known = before.extract(window.get())) {
      followed_.insert(std::move(known));
      continue;
    }
    auto& added = followed_[window.get()] = std::make_unique<Followed>(window.get());
    added->active = glib::onNotify(window.get(), "is-active", [this, raw = window.get()] {
      if (gtk_window_is_active(raw))
        lastActivated_.set(raw);
      changed_();
    });
  }
  // A window leaves the list while it is being destroyed, before its surface goes.
  for (const auto& [key, gone] : before)
    if (const auto window = gone->window.lock())
      disconnectFromSurface(window.get());
}

} // namespace ondrel::platform::windows
