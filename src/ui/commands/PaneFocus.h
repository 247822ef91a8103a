#pragma once

#include <gtk/gtk.h>

namespace ondrel::ui {

// Gives the keyboard to the next part of a browser's top-level (1), or to the one before (-1): its toolbar,
// its tabs where they are shown, its page. Does nothing in other windows.
void focusPane(GtkWindow* window, int step);

} // namespace ondrel::ui
