#include "platform/linux/windows/UserPresses.h"

#include <utility>

namespace ondrel::platform::windows {

namespace {
constexpr std::int64_t recentTime = std::int64_t{5} * G_USEC_PER_SEC;
}

UserPresses::UserPresses(GtkWidget* widget) : last_(g_get_monotonic_time() - recentTime) {
  auto* events = gtk_event_controller_legacy_new();
  gtk_event_controller_set_propagation_phase(events, GTK_PHASE_CAPTURE);
  events_ = glib::connect<gboolean(GtkEventControllerLegacy*, GdkEvent*)>(
      events, "event", [this](GtkEventControllerLegacy*, GdkEvent* event) -> gboolean {
        take(event);
        return FALSE;
      });
  gtk_widget_add_controller(widget, events);
}

void UserPresses::take(GdkEvent* event) {
  const auto type = gdk_event_get_event_type(event);
  const bool isNewKey = type == GDK_KEY_PRESS && !std::exchange(keyIsDown_, true);
  if (type == GDK_KEY_RELEASE)
    keyIsDown_ = false;
  if (isNewKey || type == GDK_BUTTON_PRESS || type == GDK_TOUCH_BEGIN)
    ++count_;
  const bool isEscape = type == GDK_KEY_PRESS && gdk_key_event_get_keyval(event) == GDK_KEY_Escape;
  if (!isEscape && (type == GDK_BUTTON_PRESS || type == GDK_KEY_PRESS || type == GDK_TOUCH_END))
    last_ = g_get_monotonic_time();
}

std::uint64_t UserPresses::addChoice() {
  last_ = g_get_monotonic_time();
  return ++count_;
}

bool UserPresses::isRecent() const {
  return g_get_monotonic_time() - last_ < recentTime;
}

} // namespace ondrel::platform::windows
