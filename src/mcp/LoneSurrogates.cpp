#include "mcp/LoneSurrogates.h"

#include <fmt/format.h>

#include <charconv>
#include <optional>

namespace ondrel::mcp {

namespace {

constexpr std::size_t escapeLength = 6;

// The code unit of an escape at the beginning of the text.
std::optional<unsigned> escapedUnit(std::string_view text) {
  if (!text.starts_with("\\u") || text.size() < escapeLength)
    return std::nullopt;
  const auto* first = text.data() + 2;
  const auto* last = text.data() + escapeLength;
  unsigned unit = 0;
  const auto [end, error] = std::from_chars(first, last, unit, 16);
  return error == std::errc() && end == last ? std::optional(unit) : std::nullopt;
}

bool isHigh(std::optional<unsigned> unit) {
  return unit && *unit >= 0xD800 && *unit < 0xDC00;
}

bool isLow(std::optional<unsigned> unit) {
  return unit && *unit >= 0xDC00 && *unit < 0xE000;
}

void appendBytes(std::string& text, unsigned unit) {
  text += static_cast<char>(0xE0U | unit >> 12U);
  text += static_cast<char>(0x80U | (unit >> 6U & 0x3FU));
  text += static_cast<char>(0x80U | (unit & 0x3FU));
}

} // namespace

std::string loneSurrogatesAsBytes(std::string_view json) {
  std::string result;
  result.reserve(json.size());
  while (!json.empty()) {
    const auto unit = escapedUnit(json);
    std::size_t length = json.front() == '\\' ? 2 : 1;
    if (isHigh(unit) && isLow(escapedUnit(json.substr(escapeLength))))
      length = 2 * escapeLength;
    else if (isHigh(unit) || isLow(unit)) {
      appendBytes(result, *unit);
      json.remove_prefix(escapeLength);
      continue;
    }
    result += json.substr(0, length);
    json.remove_prefix(std::min(length, json.size()));
  }
  return result;
}

std::string loneSurrogatesAsEscapes(std::string_view json) {
  std::string result;
  result.reserve(json.size());
  for (std::size_t i = 0; i < json.size(); ++i) {
    const auto byte = [&](std::size_t offset) { return static_cast<unsigned char>(json[i + offset]); };
    if (byte(0) == 0xED && i + 2 < json.size() && byte(1) >= 0xA0) {
      result += fmt::format("\\u{:04x}", 0xD000U | (byte(1) & 0x3FU) << 6U | (byte(2) & 0x3FU));
      i += 2;
    } else {
      result += json[i];
    }
  }
  return result;
}

} // namespace ondrel::mcp
