#pragma once

#include <string>
#include <string_view>

namespace ondrel::ui {

// Shows the keys in a text the way this desktop writes them: "Actual Size ⌘0" becomes "Actual Size Ctrl+0".
// Signs of keys stand directly before the key that they are held with.
std::string withDesktopKeys(std::string_view text);

} // namespace ondrel::ui
