#include "highlights/file/PersistedHighlight.h"

#include "base/Json.h"
#include "highlights/file/HighlightAnchor.h"

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include <algorithm>
#include <cmath>
#include <utility>

namespace ondrel::highlights {

namespace {

namespace json = boost::json;

// All of the member is in a field. A quote that has more to it is kept as it is, too.
bool isKnown(const json::key_value_pair& member, bool hasQuote) {
  static constexpr std::string_view keys[] = {"id",     "threadId",        "exact",    "prefix",
                                              "suffix", "occurrenceIndex", "createdAt"};
  const std::string_view key = member.key();
  if (key == "quote")
    return hasQuote && member.value().get_object().size() == 3;
  return std::ranges::count(keys, key) > 0;
}

} // namespace

PersistedHighlight PersistedHighlight::from(HighlightAnchor anchor, std::string threadId, double createdAt) {
  return {.id = std::move(anchor.id),
          .threadId = std::move(threadId),
          .exact = std::move(anchor.exact),
          .prefix = std::move(anchor.prefix),
          .suffix = std::move(anchor.suffix),
          .occurrenceIndex = anchor.occurrenceIndex,
          .createdAt = createdAt,
          .quote = std::move(anchor.quote)};
}

json::object PersistedHighlight::encode() const {
  json::object record;
  record.reserve(7);
  record.emplace("id", json::string_view(id));
  record.emplace("threadId", json::string_view(threadId));
  record.emplace("exact", json::string_view(exact));
  record.emplace("prefix", json::string_view(prefix));
  record.emplace("suffix", json::string_view(suffix));
  record.emplace("occurrenceIndex", occurrenceIndex);
  record.emplace("createdAt", createdAt);
  return record;
}

json::object PersistedHighlight::encodeWhole() const {
  auto record = encode();
  if (quote)
    record.emplace("quote", quote->encode());
  if (!further.empty())
    for (const auto& member : json::parse(further).as_object())
      record.insert_or_assign(member.key(), member.value());
  return record;
}

std::optional<PersistedHighlight> PersistedHighlight::decode(const base::JsonReader& record) {
  PersistedHighlight highlight;
  if (!record["id"].read(highlight.id) || !record["threadId"].read(highlight.threadId) ||
      !record["exact"].read(highlight.exact) || !record["prefix"].read(highlight.prefix) ||
      !record["suffix"].read(highlight.suffix) ||
      !record["occurrenceIndex"].read(highlight.occurrenceIndex) ||
      !record["createdAt"].read(highlight.createdAt))
    return std::nullopt;
  // A number too large for a double has no form in JSON: saving it would spoil the whole file.
  if (!std::isfinite(highlight.createdAt))
    return std::nullopt;
  highlight.quote = HighlightQuote::decode(record["quote"]);
  json::object further;
  for (const auto& member : *record.object())
    if (!isKnown(member, highlight.quote.has_value()))
      further.emplace(member.key(), member.value());
  if (!further.empty())
    highlight.further = base::jsonText(further);
  return highlight;
}

} // namespace ondrel::highlights
