#include "platform/linux/windows/WindowPlacement.h"

#include "platform/linux/windows/FrameLimits.h"
#include "platform/linux/windows/X11Windows.h"

#include <cmath>

namespace ondrel::platform::windows {

namespace {

std::vector<Rect> monitors(GtkWindow* window) {
  std::vector<Rect> result;
  auto* list = gdk_display_get_monitors(gtk_widget_get_display(GTK_WIDGET(window)));
  for (guint i = 0; i < g_list_model_get_n_items(list); ++i) {
    const auto monitor = glib::adopt(GDK_MONITOR(g_list_model_get_item(list, i)));
    GdkRectangle area{};
    gdk_monitor_get_geometry(monitor.get(), &area);
    if (area.width > 0 && area.height > 0)
      result.push_back({double(area.x), double(area.y), double(area.width), double(area.height)});
  }
  return result;
}

constexpr Rect standardFrame{0, 0, 870, 768};

} // namespace

WindowPlacement::WindowPlacement(GtkWindow* window, const Rect& size) : window_(window) {
  const auto usable = usableFrame({0, 0, size.width, size.height}, standardFrame, monitors(window));
  gtk_window_set_default_size(window_, static_cast<int>(usable.width), static_cast<int>(usable.height));
  mapped_ = glib::connect<void(GtkWidget*)>(
      window_, "map", [this](GtkWidget*) { moveOnceMapped(); }, G_CONNECT_AFTER);
}

std::optional<WindowPlacement::Position> WindowPlacement::currentPosition() const {
  if (!gtk_widget_get_mapped(GTK_WIDGET(window_)))
    return std::nullopt;
  const auto pixels = x11::position(window_);
  if (!pixels)
    return std::nullopt;
  const double scale = gtk_widget_get_scale_factor(GTK_WIDGET(window_));
  return Position{pixels->first / scale, pixels->second / scale};
}

Rect WindowPlacement::frame() const {
  int width = 0;
  int height = 0;
  gtk_window_get_default_size(window_, &width, &height);
  const auto [x, y] = wanted_ ? *wanted_ : currentPosition().value_or(last_);
  return {x, y, double(width), double(height)};
}

void WindowPlacement::setFrame(const Rect& frame) {
  const auto usable = usableFrame(frame, this->frame(), monitors(window_));
  gtk_window_set_default_size(window_, static_cast<int>(usable.width), static_cast<int>(usable.height));
  wanted_ = Position{usable.x, usable.y};
  if (gtk_widget_get_mapped(GTK_WIDGET(window_)))
    moveOnceMapped();
}

bool WindowPlacement::isMaximized() const {
  return maximizesOnceMoved_ || gtk_window_is_maximized(window_);
}

void WindowPlacement::maximize() {
  if (wanted_)
    maximizesOnceMoved_ = true;
  else
    gtk_window_maximize(window_);
}

void WindowPlacement::moved() {
  if (std::exchange(maximizesOnceMoved_, false))
    gtk_window_maximize(window_);
}

void WindowPlacement::rememberPosition() {
  if (const auto position = currentPosition()) {
    last_ = *position;
    wanted_ = last_;
  }
}

void WindowPlacement::moveOnceMapped() {
  if (!wanted_ || moveIfMapped())
    return;
  // The window manager places a window while it maps it, and overrides what came before.
  auto* display = gtk_widget_get_display(GTK_WIDGET(window_));
  if (!x11::position(window_)) {
    wanted_.reset();
    moved();
    return;
  }
  serverEvent_ =
      glib::connect<gboolean(GdkDisplay*, gpointer)>(display, "xevent", [this](GdkDisplay*, gpointer) {
        if (moveIfMapped())
          serverEvent_ = {};
        return FALSE;
      });
}

bool WindowPlacement::moveIfMapped() {
  if (!wanted_ || !x11::isMapped(window_))
    return !wanted_;
  const double scale = gtk_widget_get_scale_factor(GTK_WIDGET(window_));
  last_ = *std::exchange(wanted_, std::nullopt);
  x11::move(window_, static_cast<int>(std::lround(last_.first * scale)),
            static_cast<int>(std::lround(last_.second * scale)));
  moved();
  return true;
}

} // namespace ondrel::platform::windows
