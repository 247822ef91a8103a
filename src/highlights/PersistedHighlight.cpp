#include "highlights/PersistedHighlight.h"

#include "base/Json.h"
#include "highlights/HighlightAnchor.h"

#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include <algorithm>
#include <cmath>
#include <utility>

namespace ondrel::highlights {

namespace {

namespace json = boost::json;

bool read(const json::object& record, std::string_view key, std::string& field) {
  const auto* value = record.if_contains(key);
  const auto* text = value ? value->if_string() : nullptr;
  if (text)
    field.assign(text->data(), text->size());
  return text;
}

bool read(const json::object& record, std::string_view key, std::int64_t& field) {
  const auto* value = record.if_contains(key);
  const auto* number = value ? value->if_int64() : nullptr;
  if (number)
    field = *number;
  return number;
}

bool read(const json::object& record, std::string_view key, double& field) {
  const auto* value = record.if_contains(key);
  if (!value || !value->is_number())
    return false;
  field = value->to_number<double>();
  // A number too large for a double has no form in JSON: saving it would spoil the whole file.
  return std::isfinite(field);
}

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

std::optional<PersistedHighlight> PersistedHighlight::decode(const json::value& value) {
  const auto* record = value.if_object();
  PersistedHighlight highlight;
  if (!record || !read(*record, "id", highlight.id) || !read(*record, "threadId", highlight.threadId) ||
      !read(*record, "exact", highlight.exact) || !read(*record, "prefix", highlight.prefix) ||
      !read(*record, "suffix", highlight.suffix) ||
      !read(*record, "occurrenceIndex", highlight.occurrenceIndex) ||
      !read(*record, "createdAt", highlight.createdAt))
    return std::nullopt;
  if (const auto* quote = record->if_contains("quote"))
    highlight.quote = HighlightQuote::decode(*quote);
  json::object further;
  for (const auto& member : *record)
    if (!isKnown(member, highlight.quote.has_value()))
      further.emplace(member.key(), member.value());
  if (!further.empty())
    highlight.further = base::jsonText(further);
  return highlight;
}

} // namespace ondrel::highlights
