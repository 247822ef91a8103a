#pragma once

#include "platform/linux/glib/Connection.h"

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

// Says what is chosen to screen readers: the toolkit gives the row no value. After each choice.
void tellChoice(AdwComboRow* row);
// Names the entries of its list by their texts, which the toolkit doesn't, while the connection lives. Before
// it has any.
[[nodiscard]] glib::Connection nameChoices(AdwComboRow* row);

} // namespace ondrel::ui
