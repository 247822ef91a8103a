#pragma once

#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <string>

namespace ondrel::ui {

// What a control is called for those who don't see its picture.
void setAccessibleLabel(GtkWidget* widget, const std::string& label);
// What more there is to say of it.
void setAccessibleDescription(GtkWidget* widget, const std::string& text);

// With whether it can be used said to screen readers also of all that is in it: the toolkit tells them of the
// widget alone.
void setSensitive(GtkWidget* widget, bool isSensitive);

// A button whose label marks its key with an underline, which isn't part of its name.
GtkWidget* mnemonicButton(const char* label);

// Back is then to the right, and what leads to it is mirrored.
bool readsRightToLeft();

// Names the buttons and the search in a window that the toolkit has made, by what they show: it names some
// not at all and some twice. Before anything of ours is in it.
void nameToolkitControls(GtkWidget* window);

// What an empty entry says of what it is for. The pointer brings up what it has no room for.
void setPlaceholder(GtkWidget* entry, const char* text);

// The key signs of a tooltip become the desktop's own.
void setTooltip(GtkWidget* widget, const std::string& textWithKeySigns);

// Text of any length on as many lines as it takes; null for none yet.
GtkWidget* wrappedLabel(const char* text);

// The label's whole text as its tooltip, where it doesn't all show. While the connection lives.
[[nodiscard]] glib::Connection tipWhereCut(GtkWidget* label);

// Gives the keyboard to the widget or, where it is a mere container, to the first inside that takes it.
bool giveFocus(GtkWidget* widget);

// A flat button of a toolbar, which leaves the keyboard to the page when it is clicked.
GtkWidget* toolbarButton(const char* identifier, const char* icon, const std::string& label,
                         const std::string& tooltip);

// Lets what the button, or a group of rows, says go over several lines where there is no room beside it: long
// words, large letters.
void wrapText(GtkWidget* button);

} // namespace ondrel::ui
