#pragma once

#include "highlights/file/PersistedHighlight.h"

#include <expected>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::highlights {

// What a highlights file holds.
struct StoredHighlights {
  // By the Message-ID of their message. No list is empty.
  std::map<std::string, std::vector<PersistedHighlight>> byMessageId;
  // Members of the file that only a later version of the program knows, as they stand in JSON: "a":1,"b":{}
  std::string further;

  // Or what is wrong with it. One bad record spoils the whole.
  static std::expected<StoredHighlights, std::string> decode(std::string_view text);
};

// The highlights of a message after two copies of the program have changed them: `changed` has the ids that
// were added or removed here since the two had the same, all others are as `theirs` has them. Ours come
// first, except where theirs has them all.
std::vector<PersistedHighlight> merged(const std::vector<PersistedHighlight>& ours,
                                       std::vector<PersistedHighlight> theirs,
                                       const std::set<std::string>& changed);

} // namespace ondrel::highlights
