#pragma once

#include <string>
#include <string_view>

namespace ondrel::integrations {

// Puts a style sheet into a page, in place of the one that it put there before. A "$" stays as it is: what
// the user writes as "${...}" is for the page to fill in.
std::string styleScript(std::string_view styles);
// The sheet begins in this line of the script, counted from 1.
inline constexpr int firstLineOfStyles = 6;

inline constexpr const char* styleRemoval = "document.getElementById('ondrel-css')?.remove();";

} // namespace ondrel::integrations
