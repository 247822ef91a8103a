#pragma once

#include <glib.h>

#include <chrono>
#include <functional>
#include <thread>

namespace ondrel::support {

// Takes turns of the main loop until it holds; false when that takes too long. Other threads and processes,
// which don't wake the loop, are looked at each millisecond.
inline bool runUntil(const std::function<bool()>& holds,
                     std::chrono::milliseconds limit = std::chrono::seconds(10)) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!holds() && std::chrono::steady_clock::now() < end)
    if (!g_main_context_iteration(nullptr, FALSE))
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return holds();
}

inline void runFor(std::chrono::milliseconds time) {
  runUntil([] { return false; }, time);
}

} // namespace ondrel::support
