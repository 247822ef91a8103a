#pragma once

#include "platform/linux/glib/Ref.h"
#include "support/MainLoop.h"

#include <adwaita.h>

#include <set>
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
// While it lives texts are translated into longer ones, letters are twice as large, and all runs from right
// to left.
class PseudoLocale {
 public:
  PseudoLocale();
  PseudoLocale(const PseudoLocale&) = delete;
  PseudoLocale& operator=(const PseudoLocale&) = delete;
  ~PseudoLocale();

 private:
  int dpi_ = 0;
};
// Fails for each text that can be seen and is neither translated nor one of `others`, and for each that is
// cut.
void expectTranslated(GtkWidget* root, const std::set<std::string>& others = {});
// Fails for each text that is cut or sticks out.
void expectUncut(GtkWidget* root);
// Fails, too, for what doesn't go into the narrowest window. After its next frames.
void expectReadable(GtkWidget* root);
bool hasAccessibleLabel(GtkWidget* widget, const std::string& label);

} // namespace ondrel::ui
