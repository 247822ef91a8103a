#include "platform/linux/webkit/WebKitBackground.h"

#include <adwaita.h>

#include <chrono>

namespace ondrel::platform::webkit {

namespace {

constexpr GdkRGBA white{1, 1, 1, 1};
// The background of the toolkit's own views in the dark style.
constexpr GdkRGBA dark{30 / 255.0F, 30 / 255.0F, 30 / 255.0F, 1};

// The engine was measured to take up to 40 ms to draw a page that comes back to the screen.
constexpr std::chrono::milliseconds drawingTime{120};

} // namespace

WebKitBackground::WebKitBackground(WebKitWebView* view)
    : view_(view),
      styleChanged_(glib::onNotify(adw_style_manager_get_default(), "dark", [this] { styleDidChange(); })),
      mapped_(glib::connect<void(GtkWidget*)>(view, "map", [this](GtkWidget*) { viewDidMap(); })) {
  update();
}

void WebKitBackground::set(bool pageWantsWhite) {
  pageWantsWhite_ = pageWantsWhite;
  update();
}

// Of a page that isn't on the screen the engine keeps the last picture, and shows that first.
void WebKitBackground::styleDidChange() {
  update();
  if (gtk_widget_get_mapped(GTK_WIDGET(view_)))
    return;
  isCovered_ = true;
  gtk_widget_set_opacity(GTK_WIDGET(view_), 0);
}

void WebKitBackground::viewDidMap() {
  if (!isCovered_)
    return;
  uncover_ = async::Timer(drawingTime, [this] {
    if (!gtk_widget_get_mapped(GTK_WIDGET(view_)))
      return; // it has gone again, and nothing was drawn
    isCovered_ = false;
    gtk_widget_set_opacity(GTK_WIDGET(view_), 1);
  });
}

void WebKitBackground::update() const {
  const bool isDark = adw_style_manager_get_dark(adw_style_manager_get_default()) != FALSE;
  webkit_web_view_set_background_color(view_, isDark && !pageWantsWhite_ ? &dark : &white);
}

} // namespace ondrel::platform::webkit
