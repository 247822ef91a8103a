#include "mcp/MCPDispatch.h"

#include "base/JsonReader.h"
#include "base/Text.h"
#include "jmap/mail/MailQueries.h"
#include "mcp/tools/MCPTools.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <algorithm>
#include <utility>

namespace ondrel::mcp {

namespace {

namespace json = boost::json;

// A call that can be made.
struct ToolCall {
  const tools::MCPTool* tool;
  json::object arguments;
};

std::unexpected<JSONRPCError> failure(int code, std::string message) {
  return std::unexpected(JSONRPCError{code, std::move(message)});
}

std::unexpected<JSONRPCError> methodNotFound() {
  return failure(JSONRPCError::methodNotFound, "Method not found");
}

std::expected<ToolCall, JSONRPCError> toolCall(const std::optional<JSONValue>& params) {
  const auto reader = params ? base::JsonReader(*params) : base::JsonReader();
  const auto name = reader["name"].string();
  if (!name)
    return failure(JSONRPCError::invalidParams, "Missing tool name");
  const auto found = std::ranges::find(tools::mcpTools, *name, [](const auto* tool) { return tool->name; });
  if (found == tools::mcpTools.end())
    return methodNotFound();
  // Arguments of another type hold nothing, as missing ones do.
  const auto* given = reader["arguments"].object();
  ToolCall call{.tool = *found, .arguments = given ? *given : json::object()};
  for (const auto& argument : call.tool->arguments)
    if (argument.isRequired && !argument.isGiven(call.arguments))
      return failure(JSONRPCError::invalidParams,
                     "Missing required parameter: " + std::string(argument.name));
  return call;
}

JSONValue initializeResult() {
  return {{"protocolVersion", "2024-11-05"},
          {"capabilities", {{"tools", json::object()}}},
          {"serverInfo", {{"name", "ondrel"}, {"version", "1.0.0"}}}};
}

JSONValue toolsListResult() {
  json::array list;
  for (const auto* tool : tools::mcpTools)
    list.push_back(
        {{"name", tool->name}, {"description", tool->description}, {"inputSchema", tool->inputSchema()}});
  return json::object{{"tools", std::move(list)}};
}

// Text that is not UTF-8 is mended: JSON has no other.
JSONValue toolCallResult(const std::string& text, bool isError) {
  json::array content;
  content.push_back({{"type", "text"}, {"text", base::isValidUtf8(text) ? text : base::displayLine(text)}});
  return {{"content", std::move(content)}, {"isError", isError}};
}

} // namespace

async::Task<RPCAnswer> MCPDispatch::handleRPC(std::string body) {
  // Nothing of the request that isn't needed stays while a tool waits for the network.
  auto request = JSONRPCRequest::decode(std::exchange(body, {}));
  if (!request) {
    const JSONRPCResponse response{.id = {}, .result = failure(JSONRPCError::parseError, "Parse error")};
    co_return RPCAnswer(200, response.encoded());
  }
  const bool isNotification = !request->id;
  const auto response = co_await dispatch(*std::move(request));
  if (isNotification || !response)
    co_return RPCAnswer(202, "");
  co_return RPCAnswer(200, response->encoded());
}

async::Task<std::optional<JSONRPCResponse>> MCPDispatch::dispatch(JSONRPCRequest request) {
  if (request.method == "initialize")
    co_return JSONRPCResponse{std::move(request.id), initializeResult()};
  if (request.method == "initialized")
    co_return std::nullopt;
  if (request.method == "tools/list")
    co_return JSONRPCResponse{std::move(request.id), toolsListResult()};
  if (request.method == "tools/call")
    co_return co_await handleToolCall(std::move(request));
  co_return JSONRPCResponse{std::move(request.id), methodNotFound()};
}

async::Task<JSONRPCResponse> MCPDispatch::handleToolCall(JSONRPCRequest request) {
  auto call = toolCall(std::exchange(request.params, {}));
  if (!call)
    co_return JSONRPCResponse{std::move(request.id), std::unexpected(std::move(call).error())};
  const auto outcome = co_await run(call->tool, std::move(call->arguments));
  if (outcome)
    co_return JSONRPCResponse{std::move(request.id), toolCallResult(*outcome, false)};
  co_return JSONRPCResponse{std::move(request.id), toolCallResult("Error: " + outcome.error(), true)};
}

async::Task<tools::ToolOutcome> MCPDispatch::run(const tools::MCPTool* tool, json::object arguments) {
  // A client would not wait as long as a tool does for a token that nobody can give.
  const bool nobody = co_await services_.mail.isSignInShown();
  if (nobody)
    co_return std::unexpected(jmap::JMAPError::notAuthenticated().description());
  co_return co_await tool->run(services_, std::move(arguments));
}

} // namespace ondrel::mcp
