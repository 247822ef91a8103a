#pragma once

#include "base/Translation.h"

namespace ondrel::web {

// What the user is asked before a page goes that wants it so, whatever its own text is. "Stay" is the default
// and the answer of Escape.
inline constexpr const char* leaveHeading = base::trMark("Leave this page?");
inline constexpr const char* leaveText = base::trMark("Changes that you made may not be saved");
// TRANSLATORS: the page stays
inline constexpr const char* stayButton = base::trMark("Stay");
// TRANSLATORS: the page goes
inline constexpr const char* leaveButton = base::trMark("Leave");

} // namespace ondrel::web
