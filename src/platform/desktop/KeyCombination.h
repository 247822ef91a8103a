#pragma once

#include <string>

namespace ondrel::platform {

// One key and what is held with it.
struct KeyCombination {
  bool control = false;
  bool alt = false;
  bool shift = false;
  bool super = false;
  // What the key types or does alone, by its name in the X keyboard: "m", "comma", "F5", "space".
  std::string key;

  bool operator==(const KeyCombination&) const = default;
};

} // namespace ondrel::platform
