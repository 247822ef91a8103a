#include "ui/DisplayText.h"

#include "base/Text.h"

#include <cstdint>

namespace ondrel::ui {

namespace {

constexpr std::size_t longestLine = 1000; // bytes; a line on the widest screen has fewer

} // namespace

std::string shortDisplayLine(std::string_view text) {
  if (text.size() <= longestLine)
    return base::displayLine(text);
  auto end = longestLine;
  while (end > 0 && (static_cast<std::uint8_t>(text[end]) & 0xC0) == 0x80)
    --end;
  return base::displayLine(text.substr(0, end)) + "…";
}

} // namespace ondrel::ui
