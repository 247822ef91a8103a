#pragma once

#include <string>

namespace ondrel::web {

// What keeps a tab from showing its page.
struct PageProblem {
  enum class Kind { none, loadFailed, unresponsive, processTerminated };
  Kind kind = Kind::none;
  std::string description;

  bool operator==(const PageProblem&) const = default;
};

} // namespace ondrel::web
