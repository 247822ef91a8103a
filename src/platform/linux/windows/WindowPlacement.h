#pragma once

#include "platform/Window.h"
#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <optional>
#include <utility>

namespace ondrel::platform::windows {

// Size and, on X11, place of one top-level. Coordinates are those of GTK: device pixels divided by the scale.
class WindowPlacement {
 public:
  // The window is borrowed and not shown yet; it gets that size, and its place from the window manager.
  WindowPlacement(GtkWindow* window, const Rect& size);

  // While the window is hidden, the last one. A maximised window gives the size that it goes back to.
  Rect frame() const;
  // Absurd values are replaced; a frame off all monitors is moved onto one.
  void setFrame(const Rect& frame);
  bool isMaximized() const;
  void maximize();
  // A hidden window is put somewhere by the window manager when it is shown again: this is where it belongs.
  void rememberPosition();

 private:
  using Position = std::pair<double, double>;
  std::optional<Position> currentPosition() const;
  void moveOnceMapped();
  void moved();
  bool moveIfMapped();

  GtkWindow* window_;
  std::optional<Position> wanted_; // not applied yet
  Position last_{0, 0};
  bool maximizesOnceMoved_ = false; // so that it goes back to where it belongs, on the right monitor
  glib::Connection mapped_;
  glib::Connection serverEvent_;
};

} // namespace ondrel::platform::windows
