#include "platform/linux/windows/StuckDrags.h"

#include <chrono>

namespace ondrel::platform::windows {

namespace {

// A drop on a window of this program ends at once, one on another program's desktop after some messages.
constexpr std::chrono::seconds patience{1};

// The class, and with it the signal, must be there first.
guint dropSignal() {
  g_type_class_unref(g_type_class_ref(GDK_TYPE_DRAG));
  return g_signal_lookup("drop-performed", GDK_TYPE_DRAG);
}

bool mayEndOnTheRoot(GdkDrag* drag) {
  return gdk_content_formats_contain_mime_type(gdk_drag_get_formats(drag), "application/x-rootwindow-drop") !=
         FALSE;
}

} // namespace

StuckDrags::StuckDrags()
    : signal_(dropSignal()),
      hook_(g_signal_add_emission_hook(
          signal_, 0,
          [](GSignalInvocationHint*, guint, const GValue* values, gpointer self) -> gboolean {
            static_cast<StuckDrags*>(self)->dropped(GDK_DRAG(g_value_get_object(values)));
            return TRUE;
          },
          this, nullptr)) {
}

StuckDrags::~StuckDrags() {
  g_signal_remove_emission_hook(signal_, hook_);
}

void StuckDrags::dropped(GdkDrag* drag) {
  if (!mayEndOnTheRoot(drag))
    return;
  ends_.clear();
  ends_.push_back(glib::connect<void(GdkDrag*)>(drag, "dnd-finished", [this](GdkDrag*) { forget(); }));
  ends_.push_back(glib::connect<void(GdkDrag*, GdkDragCancelReason)>(
      drag, "cancel", [this](GdkDrag*, GdkDragCancelReason) { forget(); }));
  timer_ = async::Timer(patience, [held = glib::share(drag)] {
    g_signal_emit_by_name(held.get(), "cancel", GDK_DRAG_CANCEL_NO_TARGET);
  });
}

void StuckDrags::forget() {
  timer_.stop();
  ends_.clear();
}

} // namespace ondrel::platform::windows
