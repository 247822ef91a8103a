#pragma once

#include <string_view>

namespace ondrel::web {

// What the user is asked before a page goes that wants it so, whatever its own text is. "Stay" is the default
// and the answer of Escape.
inline constexpr std::string_view leaveHeading = "Leave this page?";
inline constexpr std::string_view leaveText = "Changes that you made may not be saved";
inline constexpr std::string_view stayButton = "Stay";
inline constexpr std::string_view leaveButton = "Leave";

} // namespace ondrel::web
