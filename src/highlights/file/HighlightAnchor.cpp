#include "highlights/file/HighlightAnchor.h"

#include "base/LoneSurrogates.h"

#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include <string_view>

namespace ondrel::highlights {

namespace {

namespace json = boost::json;

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
  auto without = parsed(base::replacingLoneSurrogates(json, [](unsigned) { return ""; }));
  const auto marked = parsed(base::replacingLoneSurrogates(json, [](unsigned) { return "\\ufffd"; }));
  // Where the two differ, a surrogate stood.
  if (!without || !marked || without->exact != marked->exact || without->id != marked->id)
    return std::nullopt;
  return without;
}

} // namespace ondrel::highlights
