#pragma once

#include "platform/TextFormatting.h"

#include <fmt/chrono.h>

namespace ondrel::support {

// Dates as "<YYYY-MM-DD HH:MM>" and "<YYYY-MM-DD>" in UTC; a character is a code point.
class FakeTextFormatting final : public platform::TextFormatting {
 public:
  std::string mediumDateShortTime(std::chrono::sys_time<std::chrono::milliseconds> time) const override {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time).time_since_epoch();
    return fmt::format("<{:%Y-%m-%d %H:%M}>", fmt::gmtime(static_cast<std::time_t>(seconds.count())));
  }
  std::string mediumDate(std::chrono::sys_time<std::chrono::milliseconds> time) const override {
    return fmt::format("<{:%F}>", std::chrono::floor<std::chrono::seconds>(time));
  }
  std::string_view firstCharacters(std::string_view text, std::size_t count) const override {
    for (std::size_t i = 0; i < text.size(); ++i)
      if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80 && count-- == 0)
        return text.substr(0, i);
    return text;
  }
};

} // namespace ondrel::support
