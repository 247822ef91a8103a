#pragma once

#include "platform/linux/glib/Ref.h"
#include "support/MainLoop.h"

#include <adwaita.h>

#include <string>
#include <vector>

namespace ondrel::ui {

// For tests with a display. What the toolkit complains about fails them.
using support::runUntil;

// The widget with that name, itself or below; null when there is none.
GtkWidget* find(GtkWidget* root, const std::string& name);
// What the labels that can be seen say, from top to bottom. As if the root were on screen.
std::vector<std::string> visibleTexts(GtkWidget* root);
// By its text, or by what it is called where it has a picture.
GtkWidget* buttonWithLabel(GtkWidget* root, const std::string& label);
void click(GtkWidget* button);
bool hasAccessibleLabel(GtkWidget* widget, const std::string& label);

} // namespace ondrel::ui
