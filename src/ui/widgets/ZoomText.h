#pragma once

#include <cmath>
#include <string>

namespace ondrel::ui {

// "105%" for 1.05.
inline std::string zoomText(double zoom) {
  return std::to_string(std::lround(zoom * 100)) + "%";
}

} // namespace ondrel::ui
