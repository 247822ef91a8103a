#pragma once

#include "highlights/file/HighlightQuote.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ondrel::highlights {

// What a page tells of a highlight that was just made. The page finds it again by `exact` and
// `occurrenceIndex`; prefix and suffix are for readers.
struct HighlightAnchor {
  std::string id;
  std::string exact;
  std::string prefix;
  std::string suffix;
  std::int64_t occurrenceIndex = 0;
  std::optional<HighlightQuote> quote = std::nullopt; // where it differs from these texts

  // All keys but `quote` are required and of their type. The page cuts prefix and suffix at 32 code units,
  // which may halve a character: the half, which UTF-8 has no form for, is left out. A half in `exact` could
  // not be found again and makes the anchor none, as in the other fields. A quote of another form is left
  // out.
  static std::optional<HighlightAnchor> decode(const std::string& json);
};

} // namespace ondrel::highlights
