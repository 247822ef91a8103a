#pragma once

#include <gtk/gtk.h>

namespace ondrel::ui {

// A container for a few buttons: side by side at its end, and below each other, the last one on top, where
// they have too little room for that. It takes those that are appended to it as to a box.
GtkWidget* buttonRow();

} // namespace ondrel::ui
