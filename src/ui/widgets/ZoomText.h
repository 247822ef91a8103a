#pragma once

#include "base/Translation.h"

#include <cmath>
#include <string>

namespace ondrel::ui {

// "105%" for 1.05.
inline std::string zoomText(double zoom) {
  // TRANSLATORS: a percentage, as 105%
  return base::trFormat("{}%", std::lround(zoom * 100));
}

} // namespace ondrel::ui
