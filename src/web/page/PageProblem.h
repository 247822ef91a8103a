#pragma once

#include <string>

namespace ondrel::web {

// What keeps a tab from showing its page, or the page that was asked for last.
struct PageProblem {
  // loadFailed: there is no page, and the program tries the address again by itself. navigationFailed: the
  // page before it is still there, and stays until the user has it tried again. noApplication: the same, and
  // nothing on this machine opens such an address. unresponsive: the page is there and doesn't answer.
  enum class Kind { none, loadFailed, navigationFailed, noApplication, unresponsive, processTerminated };
  Kind kind = Kind::none;
  std::string description;
  std::string url = {}; // that could not be shown

  bool operator==(const PageProblem&) const = default;
};

} // namespace ondrel::web
