#pragma once

#include "mcp/tools/MCPTool.h"

#include <array>

namespace ondrel::mcp::tools {

extern const MCPTool searchEmailsTool;
extern const MCPTool getEmailTool;
extern const MCPTool listMailboxesTool;
extern const MCPTool openInOndrelTool;

// All tools, in the order in which they are listed. Each has its texts, arguments and work in a file of its
// own.
inline constexpr std::array mcpTools{&searchEmailsTool, &getEmailTool, &listMailboxesTool, &openInOndrelTool};

} // namespace ondrel::mcp::tools
