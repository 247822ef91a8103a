#pragma once

#include <algorithm>
#include <chrono>

namespace ondrel::web {

// A failed load is tried again after 2, 4, 8, 16, 30, 30, ... seconds until one finishes.
inline constexpr std::chrono::seconds firstRetryDelay{2};
inline constexpr std::chrono::seconds longestRetryDelay{30};

constexpr std::chrono::seconds nextRetryDelay(std::chrono::seconds delay) {
  return std::min(delay * 2, longestRetryDelay);
}

} // namespace ondrel::web
