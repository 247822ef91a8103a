#pragma once

#include <cstdint>

namespace ondrel::platform {

// Modifier flags in the program's own terms. Command is the desktop's Ctrl key and Option its Alt key. The
// Ctrl key sets `command`, and for the Tab key alone `control` instead, since tabs are switched with Ctrl+Tab
// everywhere.
struct Modifiers {
  static constexpr std::uint32_t shift = 0x20000;
  static constexpr std::uint32_t control = 0x40000;
  static constexpr std::uint32_t option = 0x80000;
  static constexpr std::uint32_t command = 0x100000;

  std::uint32_t flags = 0; // the low 16 bits are free for the platform's own use

  constexpr bool contains(std::uint32_t flag) const { return (flags & flag) != 0; }
  constexpr bool exactly(std::uint32_t wanted) const { return (flags & ~0xFFFFU) == wanted; }
};

} // namespace ondrel::platform
