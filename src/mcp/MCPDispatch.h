#pragma once

#include "async/Task.h"
#include "mcp/JSONRPC.h"
#include "mcp/MCPServer.h"
#include "mcp/tools/MCPTool.h"

#include <optional>
#include <string>

namespace ondrel::mcp {

// The Model Context Protocol, version 2024-11-05, with the tools capability and nothing else: no sessions, no
// batches, no messages from the server. Each request stands for itself. Main thread only.
class MCPDispatch {
 public:
  // Outlives its tasks.
  explicit MCPDispatch(tools::ToolServices services) : services_(std::move(services)) {}

  // The HTTP status and the body that answer a posted body. Errors of JSON-RPC travel with status 200;
  // a notification takes its full effect and is answered with 202 and nothing.
  async::Task<RPCAnswer> handleRPC(std::string body);

 private:
  // Nothing for methods that have no answer.
  async::Task<std::optional<JSONRPCResponse>> dispatch(JSONRPCRequest request);
  // A tool's failure is a result too, one with "isError".
  async::Task<JSONRPCResponse> handleToolCall(JSONRPCRequest request);
  async::Task<tools::ToolOutcome> run(const tools::MCPTool* tool, boost::json::object arguments);

  tools::ToolServices services_;
};

} // namespace ondrel::mcp
