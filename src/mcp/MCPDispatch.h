#pragma once

#include "async/Task.h"
#include "mcp/JSONRPC.h"
#include "mcp/MCPMailTools.h"
#include "mcp/MCPServer.h"
#include "mcp/MCPTools.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::mcp {

// The results of the protocol's methods, version 2024-11-05.
JSONValue initializeResult(std::string_view serverName, std::string_view serverVersion);
JSONValue toolsListResult(const std::vector<MCPTool>& tools);
// Text that is not UTF-8 is mended: JSON has no other.
JSONValue toolCallResult(const std::vector<MCPContent>& content, bool isError);

// The Model Context Protocol with the tools capability and nothing else: no sessions, no batches, no messages
// from the server. Each request stands for itself. Main thread only.
class MCPDispatch {
 public:
  // The tools outlive it, and it outlives its tasks.
  explicit MCPDispatch(MCPMailTools& tools) : tools_(tools) {}

  // The HTTP status and the body that answer a posted body. Errors of JSON-RPC travel with status 200;
  // a notification takes its full effect and is answered with 202 and nothing.
  async::Task<RPCAnswer> handleRPC(std::string body);

  // Nothing for methods that have no answer.
  async::Task<std::optional<JSONRPCResponse>> dispatch(JSONRPCRequest request);
  // A tool's failure is a result too, one with "isError".
  async::Task<JSONRPCResponse> handleToolCall(JSONRPCRequest request);

 private:
  MCPMailTools& tools_;
};

} // namespace ondrel::mcp
