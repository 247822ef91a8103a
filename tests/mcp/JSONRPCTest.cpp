#include "ToolsTest.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

namespace ondrel::mcp {
namespace {

namespace json = boost::json;

std::string result(std::string_view value) {
  return fmt::format(R"(200 {{"jsonrpc":"2.0","id":7,"result":{}}})", value);
}

std::string error(int code, std::string_view message, std::string_view id = "7") {
  return fmt::format(R"(200 {{"jsonrpc":"2.0","id":{},"error":{{"code":{},"message":"{}"}}}})", id, code,
                     message);
}

const std::string notFound = error(-32601, "Method not found");
const std::string noName = error(-32602, "Missing tool name");
const std::string noId = error(-32602, "Missing required parameter: id");
const std::string nothing = result(R"({"content":[{"type":"text","text":""}],"isError":false})");

class JSONRPCTest : public ToolsTest {
 protected:
  // The status and the body as JSON, without white space and in the order that is written.
  std::string post(std::string_view body) {
    const auto [status, answer] = run(dispatch.handleRPC(std::string(body)));
    return std::to_string(status) + " " + answer;
  }
  // A request with the id 7 and these members.
  std::string ask(std::string_view members) {
    return post(fmt::format(R"({{"jsonrpc":"2.0","id":7,{}}})", members));
  }
  std::string askForCall(std::string_view params) {
    return ask(fmt::format(R"("method":"tools/call","params":{})", params));
  }
};

std::string nested(std::size_t levels) {
  return R"({"jsonrpc":"2.0","id":7,"method":"initialized","params":)" + std::string(levels, '[') +
         std::string(levels, ']') + "}";
}

TEST_F(JSONRPCTest, RefusesWhatIsNoSingleRequest) {
  const std::string bodies[] = {
      "",
      "null",
      R"([{"jsonrpc":"2.0","id":7,"method":"tools/list"}])",
      R"({"jsonrpc":"2.0","id":7})",
      R"({"id":7,"method":"tools/list"})",
      R"({"jsonrpc":2.0,"id":7,"method":"tools/list"})",
      R"({"jsonrpc":"2.0","id":7,"method":"tools/list"} x)",
      "{\"jsonrpc\":\"2.0\",\"id\":7,\"method\":\"tools/list\",\"params\":\"\xC3\x28\"}",
      R"({"jsonrpc":"2.0","id":7,"method":"tools/list","params":"\ud800"})",
      nested(JSONRPCRequest::deepest),
      nested(100000),
  };
  for (const auto& body : bodies)
    EXPECT_EQ(post(body), R"(200 {"jsonrpc":"2.0","error":{"code":-32700,"message":"Parse error"}})")
        << body.substr(0, 200);
  EXPECT_EQ(post(nested(JSONRPCRequest::deepest - 1)), "202 ");
}

TEST_F(JSONRPCTest, AnswersUnderTheIdOfTheRequest) {
  const std::pair<const char*, const char*> ids[] = {
      {"-9223372036854775808", "-9223372036854775808"},
      {"1e3", "1000"},
      {R"("a\"\u0000\u00e9😀")", R"("a\"\u0000é😀")"},
      // No ids of JSON-RPC, and still requests that are answered.
      {"1.5", "null"},
      {"9223372036854775808", "null"},
      {R"({"a":1})", "null"},
  };
  for (const auto& [sent, answered] : ids)
    EXPECT_EQ(post(fmt::format(R"({{"jsonrpc":"1.0","id":{},"method":"ping"}})", sent)),
              error(-32601, "Method not found", answered));
}

TEST_F(JSONRPCTest, NotificationsTakeEffectAndAreNotAnswered) {
  for (const std::string id : {"", R"("id":null,)", R"("id":1,"id":null,)"}) {
    client.sent.clear();
    for (const auto* rest :
         {R"("method":"notifications/initialized")", R"("method":"tools/list")", R"("method":"nonsense")",
          R"("method":"tools/call","params":{"name":"list_mailboxes"})"})
      EXPECT_EQ(post(R"({"jsonrpc":"2.0",)" + id + rest + "}"), "202 ") << rest;
    EXPECT_EQ(client.sent.size(), 1U);
  }
  EXPECT_EQ(ask(R"("method":"initialized")"), "202 ");
}

TEST_F(JSONRPCTest, IntroducesItself) {
  EXPECT_EQ(ask(R"("method":"initialize","params":{"protocolVersion":"2099-01-01"})"),
            result(R"({"protocolVersion":"2024-11-05","capabilities":{"tools":{}},)"
                   R"("serverInfo":{"name":"ondrel","version":"1.0.0"}})"));
  EXPECT_EQ(ask(R"("method":"Initialize")"), notFound);
}

TEST_F(JSONRPCTest, ListsTheToolsWithWhatTheyTake) {
  const auto answer = json::parse(ask(R"("method":"tools/list","params":"any")").substr(4));
  const auto& listed = answer.at("result").at("tools").as_array();
  Lines names;
  for (const auto& tool : listed)
    names.emplace_back(tool.at("name").as_string());
  EXPECT_EQ(names, (Lines{"search_emails", "get_email", "list_mailboxes", "open_in_ondrel"}));
  const auto& schema = listed.at(1).at("inputSchema");
  EXPECT_EQ(schema.at("properties").at("offset").at("type"), "integer");
  EXPECT_EQ(schema.at("required"), json::array{"id"});
  EXPECT_EQ(json::serialize(listed.at(2).at("inputSchema")),
            R"({"type":"object","properties":{},"required":[]})");
}

TEST_F(JSONRPCTest, CallsAToolWhenItHasWhatItNeeds) {
  client.answer("Mailbox/get", listed("m0", "[]"));
  const std::string noEmail =
      R"({"content":[{"type":"text","text":"Error: Unexpected JMAP response format."}],"isError":true})";
  const std::pair<const char*, std::string> cases[] = {
      {R"({"name":"list_mailboxes"})", nothing},
      {R"({"name":"get_email","arguments":{"id":"","other":[]}})", result(noEmail)},
      {R"({"name":"open_in_ondrel","arguments":{"id":"M1"}})", result(noEmail)},
      {R"("get_email")", noName},
      {R"({"name":1})", noName},
      {R"({"name":"get_email"})", noId},
      {R"({"name":"open_in_ondrel","arguments":{"id":1}})", noId},
      {R"({"name":"get_email\u0000","arguments":{"id":"M1"}})", notFound},
  };
  for (const auto& [params, expected] : cases)
    EXPECT_EQ(askForCall(params), expected) << params;
  EXPECT_EQ(ask(R"("method":"tools/call")"), noName);
  EXPECT_EQ(client.sent.size(), 3U) << "and nothing for what was refused";

  client.session = std::unexpected(jmap::JMAPError::navigationFailed("broken \xff"));
  EXPECT_EQ(
      askForCall(R"({"name":"list_mailboxes"})"),
      result(R"({"content":[{"type":"text","text":"Error: Navigation failed: broken �"}],"isError":true})"));
}

} // namespace
} // namespace ondrel::mcp
