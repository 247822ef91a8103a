#pragma once

#include "platform/desktop/KeyCombination.h"

#include <optional>
#include <string>
#include <string_view>

namespace ondrel::shortcuts {

// The form in which combinations are stored, which the shortcuts of the freedesktop portals have too:
// "CTRL+ALT+m".
std::string storedText(const platform::KeyCombination& keys);
// Nothing for a text that isn't of that form, or is longer than any key's name.
std::optional<platform::KeyCombination> parseKeyCombination(std::string_view text);

// As users know it: "Ctrl+Alt+M".
std::string displayText(const platform::KeyCombination& keys);

// Whether a program may take it from all others: not what is needed to write, and to find one's way.
bool mayBeReserved(const platform::KeyCombination& keys);

} // namespace ondrel::shortcuts
