#pragma once

#include <gtk/gtk.h>

namespace ondrel::ui {

// A container for a text and a control of it, which stands at the text's side, and below it where it would
// leave the text too little room.
GtkWidget* sideOrBelow(GtkWidget* text, GtkWidget* control);

} // namespace ondrel::ui
