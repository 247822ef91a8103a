#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace ondrel::mcp::tools {

// What one answer holds of a long text, so that it fits what an assistant can read at a time: characters
// (code points).
inline constexpr std::size_t longestTextPage = 60'000;

// The text from a character on, counted from 0; a negative one is 0. Where more follows, a last line says how
// much, and how to read on. A text that fits is given as it is.
std::string textPage(std::string text, std::int64_t offset);

} // namespace ondrel::mcp::tools
