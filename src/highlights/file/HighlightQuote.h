#pragma once

#include "base/JsonReader.h"

#include <optional>
#include <string>

namespace ondrel::highlights {

// A highlight's text and what stands around it as people read them: the words of neighbouring blocks, which
// stand side by side in a page's textContent, are parted by a blank.
struct HighlightQuote {
  std::string prefix;
  std::string exact;
  std::string suffix;

  boost::json::object encode() const;
  // Three strings; further members are passed over.
  static std::optional<HighlightQuote> decode(const base::JsonReader& from);

  bool operator==(const HighlightQuote&) const = default;
};

} // namespace ondrel::highlights
