#pragma once

#include <cstdint>
#include <vector>

namespace ondrel::platform {

// Pixels that a decoder has made: RGBA, 8 bits each, premultiplied, rows from the top without gaps.
struct Picture {
  int width = 0; // pixels
  int height = 0;
  std::vector<std::uint8_t> pixels; // width * height * 4
};

} // namespace ondrel::platform
