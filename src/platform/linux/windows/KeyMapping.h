#pragma once

#include "platform/Application.h"

#include <gtk/gtk.h>

#include <vector>

namespace ondrel::platform::windows {

// What the key that was pressed can type: one symbol for each layout and level (plain, with Shift, ...).
struct KeySymbol {
  int layout = 0;
  int level = 0;
  guint value = 0;
};

// A pressed key in the program's terms. Where Ctrl or Alt is held, a key that types a digit with or without
// Shift counts as that digit, and one that types no ASCII in the present layout counts as what it types in
// another layout: so shortcuts work with French digits and with Cyrillic letters.
KeyEvent keyEventFrom(guint keyval, GdkModifierType state, const std::vector<KeySymbol>& symbols);

// The symbols of a key of the default display's keyboard.
std::vector<KeySymbol> symbolsOf(guint keycode);

// Caps Lock, Num Lock and the Super key are left out.
Modifiers modifiersFrom(GdkModifierType state, bool isTab);

} // namespace ondrel::platform::windows
