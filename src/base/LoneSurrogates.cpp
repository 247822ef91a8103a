#include "base/LoneSurrogates.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace ondrel::base {

namespace {

constexpr std::size_t escapeLength = 6; // of \uXXXX

// The code unit of an escape of that form at the beginning of the text.
std::optional<unsigned> escapedUnit(std::string_view text) {
  if (text.size() < escapeLength || !text.starts_with("\\u"))
    return std::nullopt;
  unsigned unit = 0;
  const auto* end = text.data() + escapeLength;
  const auto result = std::from_chars(text.data() + 2, end, unit, 16);
  return result.ec == std::errc() && result.ptr == end ? std::optional(unit) : std::nullopt;
}

bool isHigh(std::optional<unsigned> unit) {
  return unit && (*unit & 0xFC00) == 0xD800;
}

bool isLow(std::optional<unsigned> unit) {
  return unit && (*unit & 0xFC00) == 0xDC00;
}

} // namespace

std::string replacingLoneSurrogates(std::string_view json,
                                    const std::function<std::string(unsigned half)>& replacement) {
  std::string result;
  result.reserve(json.size());
  while (!json.empty()) {
    const auto backslash = std::min(json.find('\\'), json.size());
    result += json.substr(0, backslash);
    json.remove_prefix(backslash);
    const auto unit = escapedUnit(json);
    auto length = unit ? escapeLength : std::min<std::size_t>(2, json.size());
    if (isHigh(unit) && isLow(escapedUnit(json.substr(escapeLength))))
      length *= 2;
    else if (isHigh(unit) || isLow(unit)) {
      result += replacement(*unit);
      json.remove_prefix(length);
      continue;
    }
    result += json.substr(0, length);
    json.remove_prefix(length);
  }
  return result;
}

} // namespace ondrel::base
