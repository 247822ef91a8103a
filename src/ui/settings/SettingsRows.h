#pragma once

#include <adwaita.h>

#include <string_view>

namespace ondrel::ui {

// A row with a switch at its end; a click anywhere on the row turns it.
AdwActionRow* switchRow(const char* identifier, GtkSwitch* control);
// A row with a short text field at its end, which gets the keyboard wherever the row is clicked.
AdwActionRow* fieldRow(const char* identifier, GtkEntry* field, int characters);

// A row that leads out of the program when it is clicked.
AdwActionRow* linkRow(const char* title);

// Plain text, never markup. Names the control too, which has no label of its own; the first letter is the
// mnemonic.
void setRowTitle(AdwActionRow* row, GtkWidget* control, std::string_view title);
void setRowSubtitle(AdwActionRow* row, std::string_view subtitle);

} // namespace ondrel::ui
