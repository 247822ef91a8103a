#include "ToolsWorld.h"

#include "mcp/MCPDispatch.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include <array>
#include <deque>

namespace ondrel::mcp {
namespace {

namespace json = boost::json;

// Keeps what it was asked, and answers with what the test has set.
class FakeTools final : public MCPMailTools {
 public:
  async::Task<ToolOutcome> searchEmails(EmailSearch search) override {
    searches.push_back(std::move(search));
    return answer("search");
  }
  async::Task<ToolOutcome> getEmail(std::string id) override { return answer("get " + id); }
  async::Task<ToolOutcome> listMailboxes() override { return answer("list"); }
  async::Task<ToolOutcome> openInOndrel(std::string id) override { return answer("open " + id); }

  std::vector<std::string> calls;
  std::vector<EmailSearch> searches;
  ToolOutcome outcome = std::vector{MCPContent{.text = "found"}};

 private:
  async::Task<ToolOutcome> answer(std::string call) {
    calls.push_back(std::move(call));
    co_await async::nextTurn();
    co_return outcome;
  }
};

class JSONRPCTest : public ToolsTest {
 protected:
  // The status and the body as JSON, without white space and in the order that is written.
  std::string post(std::string_view body) {
    const auto [status, answer] = run(dispatch.handleRPC(std::string(body)));
    return std::to_string(status) + " " + answer;
  }
  std::string result(std::string_view value) {
    return R"(200 {"jsonrpc":"2.0","id":7,"result":)" + std::string(value) + "}";
  }
  std::string error(int code, std::string_view message) {
    return fmt::format(R"(200 {{"jsonrpc":"2.0","id":7,"error":{{"code":{},"message":"{}"}}}})", code,
                       message);
  }
  std::string call(std::string_view params) {
    return post(fmt::format(R"({{"jsonrpc":"2.0","id":7,"method":"tools/call","params":{}}})", params));
  }

  FakeTools tools;
  MCPDispatch dispatch{tools};
};

const std::string parseError = R"(200 {"jsonrpc":"2.0","error":{"code":-32700,"message":"Parse error"}})";
const std::string found = R"({"content":[{"type":"text","text":"found"}],"isError":false})";

std::string nested(std::size_t levels) {
  return R"({"jsonrpc":"2.0","id":7,"method":"initialized","params":)" + std::string(levels, '[') +
         std::string(levels, ']') + "}";
}

TEST_F(JSONRPCTest, RefusesWhatIsNoSingleRequest) {
  const std::string bodies[] = {
      "",
      "x",
      "{",
      "null",
      "7",
      R"("tools/list")",
      R"([{"jsonrpc":"2.0","id":7,"method":"tools/list"}])",
      R"({"jsonrpc":"2.0","id":7})",
      R"({"id":7,"method":"tools/list"})",
      R"({"jsonrpc":2.0,"id":7,"method":"tools/list"})",
      R"({"jsonrpc":null,"id":7,"method":"tools/list"})",
      R"({"jsonrpc":"2.0","id":7,"method":null})",
      R"({"jsonrpc":"2.0","id":7,"method":"tools/list"} x)",
      R"({"jsonrpc":"2.0","id":7,"method":"tools/list",})",
      "{\"jsonrpc\":\"2.0\",\"id\":7,\"method\":\"tools/list\",\"params\":\"\xC3\x28\"}",
      "{\"jsonrpc\":\"2.0\",\"id\":7,\"method\":\"tools/list\",\"params\":\"\xED\xA0\x80\"}",
      R"({"jsonrpc":"2.0","id":7,"method":"tools/list","params":"\ud800"})",
      R"({"jsonrpc":"2.0","id":7,"method":"tools/list","params":NaN})",
      std::string("{\"jsonrpc\":\"2.0\",\0}", 18),
      nested(JSONRPCRequest::deepest),
      nested(100000),
  };
  for (const auto& body : bodies)
    EXPECT_EQ(post(body), parseError) << body.substr(0, 200);
  EXPECT_EQ(post(nested(JSONRPCRequest::deepest - 1)), "202 ");
}

TEST_F(JSONRPCTest, AnswersUnderTheIdOfTheRequest) {
  const std::pair<const char*, const char*> ids[] = {
      {"1", "1"},
      {"-9223372036854775808", "-9223372036854775808"},
      {"9223372036854775807", "9223372036854775807"},
      {"1.0", "1"},
      {"1e3", "1000"},
      {R"("")", R"("")"},
      {R"("a\"\u0000\u00e9😀")", R"("a\"\u0000é😀")"},
      // No ids of JSON-RPC, and still requests that are answered.
      {"true", "null"},
      {"1.5", "null"},
      {"9223372036854775808", "null"},
      {"18446744073709551616", "null"},
      {"-1e300", "null"},
      {"[1]", "null"},
      {R"({"a":1})", "null"},
      // The last of several.
      {R"(1,"id":2)", "2"},
      {R"(null,"id":"b")", R"("b")"},
  };
  for (const auto& [sent, answered] : ids)
    EXPECT_EQ(post(fmt::format(R"({{"jsonrpc":"1.0","id":{},"method":"ping"}})", sent)),
              fmt::format(
                  R"(200 {{"jsonrpc":"2.0","id":{},"error":{{"code":-32601,"message":"Method not found"}}}})",
                  answered));
}

TEST_F(JSONRPCTest, NotificationsTakeEffectAndAreNotAnswered) {
  for (const std::string id : {"", R"("id":null,)", R"("id":1,"id":null,)"}) {
    tools.calls.clear();
    const auto notify = [&](std::string_view rest) {
      return post(R"({"jsonrpc":"2.0",)" + id + std::string(rest));
    };
    EXPECT_EQ(notify(R"("method":"notifications/initialized"})"), "202 ");
    EXPECT_EQ(notify(R"("method":"tools/list"})"), "202 ");
    EXPECT_EQ(notify(R"("method":"nonsense"})"), "202 ");
    EXPECT_EQ(notify(R"("method":"tools/call","params":{"name":"open_in_ondrel","arguments":{"id":"M1"}}})"),
              "202 ");
    EXPECT_EQ(tools.calls, Lines{"open M1"});
  }
  EXPECT_EQ(post(R"({"jsonrpc":"2.0","id":7,"method":"initialized"})"), "202 ");
}

TEST_F(JSONRPCTest, Introduces) {
  const auto expected = result(
      R"({"protocolVersion":"2024-11-05","capabilities":{"tools":{}},"serverInfo":{"name":"ondrel","version":"1.0.0"}})");
  for (const std::string params : {"", R"(,"params":{"protocolVersion":"2099-01-01"})", R"(,"params":[1])"})
    EXPECT_EQ(post(R"({"jsonrpc":"2.0","id":7,"method":"initialize")" + params + "}"), expected);
  EXPECT_EQ(post(R"({"jsonrpc":"2.0","id":7,"method":"Initialize"})"), error(-32601, "Method not found"));
  EXPECT_EQ(post(R"({"jsonrpc":"2.0","id":7,"method":"ping"})"), error(-32601, "Method not found"));
}

TEST_F(JSONRPCTest, ListsTheTools) {
  EXPECT_EQ(json::parse(post(R"({"jsonrpc":"2.0","id":7,"method":"tools/list","params":"any"})").substr(4)),
            json::parse(R"({"jsonrpc":"2.0","id":7,"result":{"tools":[
    {"name":"search_emails","description":"Search emails in Fastmail. Returns sender, subject, date, and a preview for each match.",
     "inputSchema":{"type":"object","properties":{
       "after":{"type":"string","description":"Only emails received after this ISO 8601 datetime (e.g. 2025-01-01T00:00:00Z)."},
       "before":{"type":"string","description":"Only emails received before this ISO 8601 datetime."},
       "from":{"type":"string","description":"Filter by sender address or name fragment."},
       "subject":{"type":"string","description":"Filter by subject keyword."},
       "limit":{"type":"integer","description":"Maximum results to return (1\u201350, default 20)."}},"required":[]}},
    {"name":"get_email","description":"Retrieve the full content of a single email by its JMAP ID (obtained from search_emails).",
     "inputSchema":{"type":"object","properties":{"id":{"type":"string","description":"The JMAP email ID returned by search_emails."}},"required":["id"]}},
    {"name":"list_mailboxes","description":"List all Fastmail mailboxes (folders) with total and unread email counts.",
     "inputSchema":{"type":"object","properties":{},"required":[]}},
    {"name":"open_in_ondrel","description":"Navigate Ondrel to a specific email by its JMAP ID and bring the app to front.",
     "inputSchema":{"type":"object","properties":{"id":{"type":"string","description":"The JMAP email ID to open (from search_emails or get_email)."}},"required":["id"]}}
  ]}})"));
}

TEST_F(JSONRPCTest, CallsATool) {
  EXPECT_EQ(call(R"({"name":"get_email","arguments":{"id":"M1","other":[]}})"), result(found));
  EXPECT_EQ(call(R"({"name":"get_email","arguments":{"id":""}})"), result(found));
  EXPECT_EQ(call(R"({"name":"open_in_ondrel","arguments":{"id":"M2"}})"), result(found));
  for (const auto* arguments : {"{}", "[]", "null", "7", R"({"id":1})"})
    EXPECT_EQ(call(fmt::format(R"({{"name":"list_mailboxes","arguments":{}}})", arguments)), result(found));
  EXPECT_EQ(call(R"({"name":"list_mailboxes"})"), result(found));
  EXPECT_EQ(tools.calls,
            (Lines{"get M1", "get ", "open M2", "list", "list", "list", "list", "list", "list"}));
}

TEST_F(JSONRPCTest, RefusesCallsThatCantBeMade) {
  for (const auto* params : {"null", "[]", "7", R"("get_email")", "{}", R"({"name":null})", R"({"name":1})",
                             R"({"arguments":{"name":"get_email"}})"})
    EXPECT_EQ(call(params), error(-32602, "Missing tool name")) << params;
  EXPECT_EQ(post(R"({"jsonrpc":"2.0","id":7,"method":"tools/call"})"), error(-32602, "Missing tool name"));
  for (const auto* name : {"get_email", "open_in_ondrel"})
    for (const auto* arguments :
         {"", R"(,"arguments":null)", R"(,"arguments":[])", R"(,"arguments":"M1")", R"(,"arguments":{})",
          R"(,"arguments":{"ID":"M1"})", R"(,"arguments":{"id":null})", R"(,"arguments":{"id":1})"})
      EXPECT_EQ(call(fmt::format(R"({{"name":"{}"{}}})", name, arguments)),
                error(-32602, "Missing required parameter: id"))
          << arguments;
  for (const auto* name : {"", "Get_email", "get_email ", "search", "get_email\\u0000"})
    EXPECT_EQ(call(fmt::format(R"({{"name":"{}","arguments":{{"id":"M1"}}}})", name)),
              error(-32601, "Method not found"));
  EXPECT_EQ(tools.calls, Lines());
}

TEST_F(JSONRPCTest, ReadsTheConditionsOfASearch) {
  const std::pair<const char*, EmailSearch> cases[] = {
      {R"("x":1)", {}},
      {R"("after":"a","before":"","from":"ü","subject":"s","limit":5)", {"a", "", "ü", "s", 5}},
      {R"("after":1,"before":null,"from":["x"],"subject":{},"limit":"5")", {}},
      {R"("limit":5.5)", {}},
      {R"("limit":5.0)", {.limit = 5}},
      {R"("limit":-3)", {.limit = -3}},
      {R"("limit":1e30)", {}},
      {R"("limit":9223372036854775808)", {}},
      {R"("limit":true)", {}},
      {R"("limit":5,"limit":6)", {.limit = 6}},
  };
  for (const auto& [arguments, expected] : cases) {
    EXPECT_EQ(call(fmt::format(R"({{"name":"search_emails","arguments":{{{}}}}})", arguments)),
              result(found));
    EXPECT_EQ(tools.searches.back(), expected) << arguments;
  }
  EXPECT_EQ(call(R"({"name":"search_emails"})"), result(found));
  EXPECT_EQ(tools.searches.back(), EmailSearch());
}

TEST_F(JSONRPCTest, AToolsFailureIsAResult) {
  tools.outcome = std::unexpected<std::string>("No.");
  EXPECT_EQ(call(R"({"name":"list_mailboxes"})"),
            result(R"({"content":[{"type":"text","text":"Error: No."}],"isError":true})"));
  tools.outcome = std::unexpected<std::string>("broken \xff");
  EXPECT_EQ(call(R"({"name":"list_mailboxes"})"),
            result(R"({"content":[{"type":"text","text":"Error: broken �"}],"isError":true})"));
}

TEST_F(JSONRPCTest, RequestsDontWaitForEachOther) {
  const std::string body =
      R"({"jsonrpc":"2.0","id":7,"method":"tools/call","params":{"name":"list_mailboxes"}})";
  std::array<std::optional<RPCAnswer>, 3> answers;
  for (auto& answer : answers)
    scope.spawn(support::keepResult(dispatch.handleRPC(body), &answer));
  loop.runUntilIdle();
  EXPECT_EQ(tools.calls.size(), 3u);
  for (const auto& answer : answers)
    EXPECT_EQ(answer, RPCAnswer(200, result(found).substr(4)));
}

} // namespace
} // namespace ondrel::mcp
