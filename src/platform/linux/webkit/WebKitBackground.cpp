#include "platform/linux/webkit/WebKitBackground.h"

#include <adwaita.h>

namespace ondrel::platform::webkit {

namespace {

constexpr GdkRGBA white{1, 1, 1, 1};
// The background of the toolkit's own views in the dark style.
constexpr GdkRGBA dark{30 / 255.0F, 30 / 255.0F, 30 / 255.0F, 1};

} // namespace

WebKitBackground::WebKitBackground(WebKitWebView* view)
    : view_(view),
      styleChanged_(glib::onNotify(adw_style_manager_get_default(), "dark", [this] { update(); })) {
  update();
}

void WebKitBackground::set(bool pageWantsWhite) {
  pageWantsWhite_ = pageWantsWhite;
  update();
}

void WebKitBackground::update() const {
  const bool isDark = adw_style_manager_get_dark(adw_style_manager_get_default()) != FALSE;
  webkit_web_view_set_background_color(view_, isDark && !pageWantsWhite_ ? &dark : &white);
}

} // namespace ondrel::platform::webkit
