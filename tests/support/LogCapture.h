#pragma once

#include "base/Log.h"

#include <algorithm>
#include <string>
#include <vector>

namespace ondrel::support {

// Collects the program's log lines while it lives, as "error system: text".
class LogCapture {
 public:
  LogCapture() {
    lines().clear();
    base::setLogSink([](base::LogLevel level, std::string_view category, std::string_view message) {
      constexpr const char* names[] = {"debug", "info", "notice", "error"};
      lines().push_back(std::string(names[static_cast<int>(level)]) + " " + std::string(category) + ": " +
                        std::string(message));
    });
  }
  ~LogCapture() { base::setLogSink(nullptr); }

  static std::vector<std::string>& lines() {
    static std::vector<std::string> collected;
    return collected;
  }
  long count(std::string_view line) const { return std::ranges::count(lines(), line); }
  bool anyStartsWith(std::string_view start) const {
    return std::ranges::any_of(lines(), [start](const auto& line) { return line.starts_with(start); });
  }
};

} // namespace ondrel::support
