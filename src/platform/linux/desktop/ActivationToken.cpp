#include "platform/linux/desktop/ActivationToken.h"

#include <gdk/gdk.h>
#ifdef GDK_WINDOWING_X11
#include <gdk/x11/gdkx.h>
#endif
#ifdef GDK_WINDOWING_WAYLAND
#include <gdk/wayland/gdkwayland.h>
#endif

#include <utility>

namespace ondrel::platform::desktop {

void ActivationToken::set(std::string token) {
  token_ = std::move(token);
  end_ = async::EventLoop::current().after(lifetime);
}

std::optional<std::string> ActivationToken::take() {
  auto token = std::exchange(token_, std::nullopt);
  if (token && async::EventLoop::current().now() >= end_)
    token.reset();
  return token;
}

void useActivationToken(const std::string& token) {
  auto* display = gdk_display_get_default();
  G_GNUC_BEGIN_IGNORE_DEPRECATIONS
#ifdef GDK_WINDOWING_X11
  if (GDK_IS_X11_DISPLAY(display))
    gdk_x11_display_set_startup_notification_id(display, token.c_str());
#endif
#ifdef GDK_WINDOWING_WAYLAND
  if (GDK_IS_WAYLAND_DISPLAY(display))
    gdk_wayland_display_set_startup_notification_id(display, token.c_str());
#endif
  G_GNUC_END_IGNORE_DEPRECATIONS
}

} // namespace ondrel::platform::desktop
