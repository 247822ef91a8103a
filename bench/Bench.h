#pragma once

#include "async/Scope.h"

#include <fmt/core.h>
#include <glib.h>

#include <algorithm>
#include <cerrno> // the name of the program
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::bench {

using Clock = std::chrono::steady_clock; // CLOCK_MONOTONIC
using Milliseconds = std::chrono::duration<double, std::milli>;

// A measurement that can't be trusted is none: ends the program. From any thread.
[[noreturn]] inline void fail(const std::string& what) {
  fmt::print(stderr, "{}: {}\n", program_invocation_short_name, what);
  std::_Exit(EXIT_FAILURE);
}

// That part of the values lies at or below the result; of one value at least.
inline double quantile(std::vector<double> values, double part) {
  const auto index = static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
  std::ranges::nth_element(values, values.begin() + index);
  return values[static_cast<std::size_t>(index)];
}

inline double median(std::vector<double> values) {
  return quantile(std::move(values), 0.5);
}

// Runs GLib's main loop until the task has ended.
inline void runToEnd(async::Task<void> task) {
  async::Scope scope;
  scope.spawn(std::move(task));
  while (scope.active() > 0)
    g_main_context_iteration(nullptr, TRUE);
}

} // namespace ondrel::bench
