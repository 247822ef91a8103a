#pragma once

#include "platform/Window.h"

#include <vector>

namespace ondrel::platform::windows {

inline constexpr double smallestWidth = 360; // what the narrowest device of the desktop shows
inline constexpr double smallestHeight = 294;
inline constexpr double largestSide = 16384; // X11 ends at 32767

// The frame made usable: finite numbers, a size between the limits, `fallback` for what is none. With
// monitors (in the same coordinates) it is no larger than the one it lies on most, and moved onto one where
// too little of it shows to be grabbed.
Rect usableFrame(const Rect& wanted, const Rect& fallback, const std::vector<Rect>& monitors);

} // namespace ondrel::platform::windows
