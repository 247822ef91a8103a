#pragma once

#include <gtk/gtk.h>

#include <string>

namespace ondrel::ui {

// What is known of toolkit, desktop and session, in lines, for who reads a report of a fault. Of the renderer
// only where there is a window.
std::string describeToolkit(GtkWindow* window);

} // namespace ondrel::ui
