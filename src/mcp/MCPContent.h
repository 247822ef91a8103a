#pragma once

#include <string>

namespace ondrel::mcp {

// One piece of what a tool gives back.
struct MCPContent {
  std::string type = "text";
  std::string text;

  bool operator==(const MCPContent&) const = default;
};

} // namespace ondrel::mcp
