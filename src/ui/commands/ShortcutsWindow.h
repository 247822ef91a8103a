#pragma once

#include "ui/commands/Command.h"

#include <gtk/gtk.h>

#include <vector>

namespace ondrel::ui {

// Shows the keys of all commands, and those that no command stands behind. The window belongs to the toolkit,
// as every top-level does.
GtkWindow* presentShortcuts(const std::vector<CommandGroup>& groups, GtkWindow* parent);

} // namespace ondrel::ui
