#pragma once

#include "app/PersistedSession.h"

#include <cstddef>

namespace ondrel::app {

inline constexpr std::size_t largestTabState = std::size_t{1} << 20;       // bytes
inline constexpr std::size_t largestSessionStates = std::size_t{16} << 20; // of all tabs together

// Bounds what pages can make of the saved session. A tab whose state is too large, or finds no room behind
// those before it, keeps its address alone; a title of over 1 KiB is cut, and of an address of over 64 KiB
// the origin is left.
void limitSize(PersistedSession& session);

} // namespace ondrel::app
