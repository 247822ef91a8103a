#include "ui/widgets/WidthWatch.h"

#include <algorithm>
#include <utility>

namespace ondrel::ui {

WidthWatch::WidthWatch(GtkWidget* widget, std::function<void(int)> changed)
    : widget_(widget), changed_(std::move(changed)),
      realized_(glib::connect<void(GtkWidget*)>(widget, "realize", [this](GtkWidget*) { follow(); })) {
}

void WidthWatch::follow() {
  layout_ = glib::connect<void(GdkSurface*, int, int)>(gtk_native_get_surface(gtk_widget_get_native(widget_)),
                                                       "layout", [this](GdkSurface*, int surfaceWidth, int) {
                                                         // Some window managers make a window narrower than
                                                         // it can be; the widget then sticks out.
                                                         const int width = std::min(
                                                             gtk_widget_get_width(widget_), surfaceWidth);
                                                         if (std::exchange(width_, width) != width)
                                                           changed_(width);
                                                       });
}

} // namespace ondrel::ui
