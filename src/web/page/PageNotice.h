#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace ondrel::web {

// Something that the user is told in passing, over the page of a tab.
struct PageNotice {
  std::string text;            // one line; may hold text from outside
  std::string button{};        // what can be done about it; empty for nothing
  std::function<void()> act{}; // the button's
  std::chrono::seconds time{}; // how long it is shown; none for as long as its kind is
};

} // namespace ondrel::web
