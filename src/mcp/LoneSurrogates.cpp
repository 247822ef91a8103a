#include "mcp/LoneSurrogates.h"

#include "base/LoneSurrogates.h"

#include <fmt/format.h>

namespace ondrel::mcp {

std::string loneSurrogatesAsBytes(std::string_view json) {
  return base::replacingLoneSurrogates(json, [](unsigned half) {
    return std::string{static_cast<char>(0xE0U | half >> 12U),
                       static_cast<char>(0x80U | (half >> 6U & 0x3FU)),
                       static_cast<char>(0x80U | (half & 0x3FU))};
  });
}

std::string loneSurrogatesAsEscapes(std::string_view json) {
  std::string result;
  result.reserve(json.size());
  for (std::size_t i = 0; i < json.size(); ++i) {
    const auto byte = [&](std::size_t offset) { return static_cast<unsigned char>(json[i + offset]); };
    if (byte(0) == 0xED && i + 2 < json.size() && byte(1) >= 0xA0) {
      result += fmt::format("\\u{:04x}", 0xD000U | (byte(1) & 0x3FU) << 6U | (byte(2) & 0x3FU));
      i += 2;
    } else {
      result += json[i];
    }
  }
  return result;
}

} // namespace ondrel::mcp
