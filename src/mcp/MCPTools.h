#pragma once

#include "mcp/JSONRPC.h"

#include <string>
#include <vector>

namespace ondrel::mcp {

// A tool as an assistant is told of it. The texts are what it decides by.
struct MCPTool {
  std::string name;
  std::string description;
  JSONValue inputSchema; // JSON Schema
};

const std::vector<MCPTool>& mcpTools();

} // namespace ondrel::mcp
