#pragma once

#include "ui/commands/Command.h"

#include <gtk/gtk.h>

#include <vector>

namespace ondrel::ui {

// Lets a top-level take the keys of the commands that come behind the page: the engine hands the program the
// keys that a page has not prevented, and these then come up from the widget that has the keyboard.
void addPageKeys(GtkWidget* topLevel, const std::vector<CommandGroup>& groups);

} // namespace ondrel::ui
