#pragma once

#include <string>

namespace ondrel::ui {

// The address of a link as it is shown to somebody who may follow it: harmless characters, on one line.
struct LinkText {
  std::string site; // what tells where it leads, and is never shortened; empty where nothing does
  std::string rest; // may be shortened in its middle; bounded
};

LinkText linkText(const std::string& address);

} // namespace ondrel::ui
