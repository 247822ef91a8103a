#pragma once

#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

#include <functional>

namespace ondrel::ui {

// A widget that takes the keyboard and whose content is drawn by the callable. Its size is its size request.
using DrawWidget = std::function<void(GtkSnapshot*)>;
glib::Ref<GtkWidget> makeDrawnWidget(DrawWidget draw);
// From now on it draws nothing.
void stopDrawing(GtkWidget* drawn);

} // namespace ondrel::ui
