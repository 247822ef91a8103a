#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace ondrel::platform {

// Text as the user's language and region have it. Never fails. Main thread only.
class TextFormatting {
 public:
  virtual ~TextFormatting() = default;

  // In the user's time zone: "Jan 5, 2025, 9:15 AM".
  virtual std::string mediumDateShortTime(std::chrono::sys_time<std::chrono::milliseconds> time) const = 0;
  // The same without the time: "Jan 5, 2025".
  virtual std::string mediumDate(std::chrono::sys_time<std::chrono::milliseconds> time) const = 0;
  // The beginning, with at most so many characters as people see them (grapheme clusters, UAX #29): an emoji
  // with its skin tone is one. All of the text when it has no more. Points into the text, which is UTF-8.
  virtual std::string_view firstCharacters(std::string_view text, std::size_t count) const = 0;
};

} // namespace ondrel::platform
