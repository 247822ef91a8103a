#pragma once

#include "base/Translation.h"

#include <string>
#include <string_view>

namespace ondrel::mcp {

// The port as it was given: a number of any size, or what somebody typed in place of one.
inline std::string invalidPortText(std::string_view port) {
  return base::trFormat("Invalid MCP server port: {}. Choose a port between 1 and 65535.", port);
}

} // namespace ondrel::mcp
