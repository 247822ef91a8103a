#include "mcp/MCPDispatch.h"

#include "base/Text.h"
#include "jmap/JMAPReading.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <array>
#include <utility>

namespace ondrel::mcp {

namespace {

namespace json = boost::json;

// A call that is about to be made, or why there is none.
using ToolCall = std::expected<async::Task<ToolOutcome>, JSONRPCError>;
using ToolHandler = ToolCall (*)(MCPMailTools& tools, const json::object& arguments);

std::unexpected<JSONRPCError> failure(int code, std::string message) {
  return std::unexpected(JSONRPCError{code, std::move(message)});
}

std::unexpected<JSONRPCError> methodNotFound() {
  return failure(JSONRPCError::methodNotFound, "Method not found");
}

ToolCall searchEmails(MCPMailTools& tools, const json::object& arguments) {
  EmailSearch search{.after = jmap::stringMember(arguments, "after"),
                     .before = jmap::stringMember(arguments, "before"),
                     .from = jmap::stringMember(arguments, "from"),
                     .subject = jmap::stringMember(arguments, "subject")};
  search.limit = jmap::integerMember(arguments, "limit").value_or(search.limit);
  return tools.searchEmails(std::move(search));
}

ToolCall listMailboxes(MCPMailTools& tools, const json::object&) {
  return tools.listMailboxes();
}

std::expected<std::string, JSONRPCError> requiredId(const json::object& arguments) {
  if (auto id = jmap::stringMember(arguments, "id"))
    return *std::move(id);
  return failure(JSONRPCError::invalidParams, "Missing required parameter: id");
}

ToolCall getEmail(MCPMailTools& tools, const json::object& arguments) {
  auto id = requiredId(arguments);
  if (!id)
    return std::unexpected(std::move(id).error());
  return tools.getEmail(*std::move(id), jmap::integerMember(arguments, "offset").value_or(0));
}

ToolCall openInOndrel(MCPMailTools& tools, const json::object& arguments) {
  auto id = requiredId(arguments);
  if (!id)
    return std::unexpected(std::move(id).error());
  return tools.openInOndrel(*std::move(id));
}

struct ToolRow {
  std::string_view name;
  ToolHandler handler;
};

constexpr std::array toolRows{
    ToolRow{"search_emails", searchEmails},
    ToolRow{"get_email", getEmail},
    ToolRow{"list_mailboxes", listMailboxes},
    ToolRow{"open_in_ondrel", openInOndrel},
};

ToolCall toolCall(MCPMailTools& tools, const std::optional<JSONValue>& params) {
  const auto* object = params ? params->if_object() : nullptr;
  const auto name = object ? jmap::stringMember(*object, "name") : std::nullopt;
  if (!name)
    return failure(JSONRPCError::invalidParams, "Missing tool name");
  // Arguments of another type hold nothing, as missing ones do.
  const auto* given = jmap::objectMember(*object, "arguments");
  const auto arguments = given ? *given : json::object();
  for (const auto& row : toolRows)
    if (row.name == *name)
      return row.handler(tools, arguments);
  return methodNotFound();
}

} // namespace

JSONValue initializeResult(std::string_view serverName, std::string_view serverVersion) {
  return {{"protocolVersion", "2024-11-05"},
          {"capabilities", {{"tools", json::object()}}},
          {"serverInfo", {{"name", serverName}, {"version", serverVersion}}}};
}

JSONValue toolsListResult(const std::vector<MCPTool>& tools) {
  json::array list;
  for (const auto& tool : tools)
    list.push_back(
        {{"name", tool.name}, {"description", tool.description}, {"inputSchema", tool.inputSchema}});
  return json::object{{"tools", std::move(list)}};
}

JSONValue toolCallResult(const std::vector<MCPContent>& content, bool isError) {
  json::array list;
  for (const auto& [type, text] : content)
    list.push_back({{"type", type}, {"text", base::isValidUtf8(text) ? text : base::displayLine(text)}});
  return {{"content", std::move(list)}, {"isError", isError}};
}

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
    co_return JSONRPCResponse{std::move(request.id), initializeResult("ondrel", "1.0.0")};
  if (request.method == "initialized")
    co_return std::nullopt;
  if (request.method == "tools/list")
    co_return JSONRPCResponse{std::move(request.id), toolsListResult(mcpTools())};
  if (request.method == "tools/call")
    co_return co_await handleToolCall(std::move(request));
  co_return JSONRPCResponse{std::move(request.id), methodNotFound()};
}

async::Task<JSONRPCResponse> MCPDispatch::handleToolCall(JSONRPCRequest request) {
  auto call = toolCall(tools_, std::exchange(request.params, {}));
  if (!call)
    co_return JSONRPCResponse{std::move(request.id), std::unexpected(std::move(call).error())};
  const auto outcome = co_await *std::move(call);
  if (outcome)
    co_return JSONRPCResponse{std::move(request.id), toolCallResult(*outcome, false)};
  co_return JSONRPCResponse{std::move(request.id),
                            toolCallResult({{.text = "Error: " + outcome.error()}}, true)};
}

} // namespace ondrel::mcp
