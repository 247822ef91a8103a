#pragma once

#include <cstdint>
#include <optional>

namespace ondrel::web {

// One of a kind for each press of the user (see platform::NavigationAction::gesture), however often a page
// asks for it.
class GestureLimit {
 public:
  bool take(std::uint64_t gesture) {
    const bool isFirst = used_ != gesture;
    used_ = gesture;
    return isFirst;
  }

 private:
  std::optional<std::uint64_t> used_;
};

} // namespace ondrel::web
