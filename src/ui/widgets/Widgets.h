#pragma once

#include <gtk/gtk.h>

#include <string>

namespace ondrel::ui {

// What a control is called for those who don't see its picture.
void setAccessibleLabel(GtkWidget* widget, const std::string& label);

// The key signs of a tooltip become the desktop's own.
void setTooltip(GtkWidget* widget, const std::string& textWithKeySigns);

// Text of any length on as many lines as it takes; null for none yet.
GtkWidget* wrappedLabel(const char* text);

// Gives the keyboard to the widget or, where it is a mere container, to the first inside that takes it.
bool giveFocus(GtkWidget* widget);

// A flat button of a toolbar, which leaves the keyboard to the page when it is clicked.
GtkWidget* toolbarButton(const char* identifier, const char* icon, const std::string& label,
                         const std::string& tooltip);

} // namespace ondrel::ui
