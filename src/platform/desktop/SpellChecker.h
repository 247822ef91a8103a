#pragma once

#include <string>
#include <vector>

namespace ondrel::platform {

struct SpellingDictionary {
  std::string tag;  // "de_DE", "eo"
  std::string name; // of its language, in the user's own

  bool operator==(const SpellingDictionary&) const = default;
};

// The spelling of what the user writes in pages. Main thread only.
class SpellChecker {
 public:
  virtual ~SpellChecker() = default;
  // Those of this machine, by name. Looks at each call.
  virtual std::vector<SpellingDictionary> dictionaries() const = 0;
  // As the user has them in the desktop, the best first: "de_AT.UTF-8", "de_AT", "de", "C".
  virtual std::vector<std::string> userLanguages() const = 0;
  // Marks from now on what is in none of these dictionaries; nothing when there are none.
  virtual void check(const std::vector<std::string>& tags) = 0;
};

} // namespace ondrel::platform
