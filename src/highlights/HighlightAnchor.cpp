#include "highlights/HighlightAnchor.h"

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include <algorithm>
#include <charconv>
#include <string_view>

namespace ondrel::highlights {

namespace {

namespace json = boost::json;

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

bool isHighSurrogate(std::optional<unsigned> unit) {
  return unit && (*unit & 0xFC00) == 0xD800;
}

bool isLowSurrogate(std::optional<unsigned> unit) {
  return unit && (*unit & 0xFC00) == 0xDC00;
}

// The same JSON with `replacement` in the place of each escaped surrogate that stands alone.
std::string withLoneSurrogates(std::string_view text, std::string_view replacement) {
  std::string result;
  while (!text.empty()) {
    const auto backslash = std::min(text.find('\\'), text.size());
    result += text.substr(0, backslash);
    text.remove_prefix(backslash);
    const auto unit = escapedUnit(text);
    std::size_t length = unit ? escapeLength : std::min<std::size_t>(2, text.size());
    if (isHighSurrogate(unit) && isLowSurrogate(escapedUnit(text.substr(escapeLength))))
      length *= 2;
    else if (isHighSurrogate(unit) || isLowSurrogate(unit)) {
      result += replacement;
      text.remove_prefix(length);
      continue;
    }
    result += text.substr(0, length);
    text.remove_prefix(length);
  }
  return result;
}

std::optional<HighlightAnchor> parsed(std::string_view text) {
  json::error_code error;
  const auto value = json::parse(text, error);
  const base::JsonReader record(value);
  HighlightAnchor anchor;
  if (!record["id"].read(anchor.id) || !record["exact"].read(anchor.exact) ||
      !record["prefix"].read(anchor.prefix) || !record["suffix"].read(anchor.suffix) ||
      !record["occurrenceIndex"].read(anchor.occurrenceIndex))
    return std::nullopt;
  anchor.quote = HighlightQuote::decode(record["quote"]);
  return anchor;
}

} // namespace

std::optional<HighlightAnchor> HighlightAnchor::decode(const std::string& json) {
  if (auto anchor = parsed(json))
    return anchor;
  auto without = parsed(withLoneSurrogates(json, ""));
  const auto marked = parsed(withLoneSurrogates(json, "\\ufffd"));
  // Where the two differ, a surrogate stood.
  if (!without || !marked || without->exact != marked->exact || without->id != marked->id)
    return std::nullopt;
  return without;
}

} // namespace ondrel::highlights
