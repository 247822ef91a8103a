#pragma once

#include "highlights/file/HighlightQuote.h"

#include <boost/json/fwd.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace ondrel::highlights {

struct HighlightAnchor;

// One saved highlight. Two records with the same id are the same highlight.
struct PersistedHighlight {
  std::string id;                   // a UUID made in the page; from a file it may be any text
  std::string threadId;             // of the message when the highlight was made
  std::string exact;                // the selected text, as the page's textContent gives it
  std::string prefix;               // up to 32 UTF-16 code units before it
  std::string suffix;               // and after it
  std::int64_t occurrenceIndex = 0; // how often `exact` stands before this place, overlaps counted
  double createdAt = 0;             // seconds since 2001-01-01T00:00:00Z

  // For readers, where it differs from the texts by which pages find the place.
  std::optional<HighlightQuote> quote = std::nullopt;
  // Members that only a later version of the program knows, as a JSON object; empty for none.
  std::string further = {};

  static PersistedHighlight from(HighlightAnchor anchor, std::string threadId, double createdAt);

  // The seven keys in the order of the fields: what pages get.
  boost::json::object encode() const;
  // All of it: what is kept in files.
  boost::json::object encodeWhole() const;
  // The seven keys are required and of their type.
  static std::optional<PersistedHighlight> decode(const base::JsonReader& record);

  bool operator==(const PersistedHighlight&) const = default;
};

} // namespace ondrel::highlights
