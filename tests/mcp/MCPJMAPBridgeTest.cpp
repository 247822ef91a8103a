#include "ToolsWorld.h"

#include "base/Text.h"
#include "support/JsonMutations.h"

#include <limits>

namespace ondrel::mcp {
namespace {

namespace json = boost::json;

const std::string badResponse = "Error: Unexpected JMAP response format.";

// A reply with the answers as they stand.
std::string reply(std::string_view answers) {
  return R"({"sessionState":"s","methodResponses":[)" + std::string(answers) + "]}";
}

std::string listed(std::string_view callId, std::string_view list) {
  return reply(fmt::format(R"(["Any/get",{{"list":{}}},"{}"])", list, callId));
}

class BridgeTest : public ToolsTest {
 protected:
  std::string search(EmailSearch search = {}) { return text(bridge.searchEmails(std::move(search))); }
  // What is told of one found email with these members.
  std::string found(std::string_view members) {
    client.answerNext(listed("g0", fmt::format(R"([{{"id":"M1"{}}}])", members)));
    return search();
  }
  // The arguments of a call of the last request.
  const json::object& arguments(std::size_t number = 0) {
    return client.sent.back().body.at("methodCalls").at(number).at(1).get_object();
  }
};

TEST_F(BridgeTest, AsksForTheNewestEmailsInOneRequest) {
  client.answerNext(listed("g0", "[]"));
  EXPECT_EQ(search(), "No emails found matching the search criteria.");
  ASSERT_EQ(client.sent.size(), 1u);
  EXPECT_EQ(json::value(client.sent[0].body), json::parse(R"({
    "using":["urn:ietf:params:jmap:core","urn:ietf:params:jmap:mail"],
    "methodCalls":[
      ["Email/query",{"accountId":"u123","sort":[{"property":"receivedAt","isAscending":false}],"limit":20},"q0"],
      ["Email/get",{"accountId":"u123","#ids":{"resultOf":"q0","name":"Email/query","path":"/ids"},
        "properties":["id","subject","from","receivedAt","preview"]},"g0"]]})"));
}

TEST_F(BridgeTest, PassesTheConditionsAsTheyAre) {
  const std::pair<EmailSearch, const char*> cases[] = {
      {{.after = "not a date"}, R"({"after":"not a date"})"},
      {{.subject = ""}, R"({"subject":""})"},
      {{.after = "a", .subject = "s"}, R"({"operator":"AND","conditions":[{"after":"a"},{"subject":"s"}]})"},
      {{"a", "b", "f", "\"s"},
       R"({"operator":"AND","conditions":[{"after":"a"},{"before":"b"},{"from":"f"},{"subject":"\"s"}]})"},
  };
  for (const auto& [conditions, filter] : cases) {
    search(conditions);
    EXPECT_EQ(arguments().at("filter"), json::parse(filter));
  }
  const std::pair<std::int64_t, int> limits[] = {
      {std::numeric_limits<std::int64_t>::min(), 1}, {-1, 1}, {0, 1}, {1, 1}, {50, 50}, {51, 50},
      {std::numeric_limits<std::int64_t>::max(), 50}};
  for (const auto& [asked, sent] : limits) {
    search({.limit = asked});
    EXPECT_EQ(arguments().at("limit"), sent);
  }
}

TEST_F(BridgeTest, TellsWhatItFound) {
  client.answerNext(listed("g0", R"([
    {"id":"M1","subject":"Lunch","from":[{"name":"Ann","email":"ann@x"},{"name":"Bob"}],
     "receivedAt":"2025-01-05T09:15:00Z","preview":"Shall we?"},
    {"subject":"without an id"},
    {"id":"M2"}])"));
  EXPECT_EQ(search(), "ID: M1\nFrom: Ann\nSubject: Lunch\nDate: <2025-01-05 09:15>\nPreview: Shall we?"
                      "\n\n---\n\n"
                      "ID: M2\nFrom: Unknown\nSubject: (no subject)\nDate: \nPreview: ");
  client.answerNext(listed("g0", R"([{"id":null},{}])"));
  EXPECT_EQ(search(), "");
}

TEST_F(BridgeTest, NamesTheFirstSender) {
  const std::pair<const char*, const char*> cases[] = {
      {R"([{"name":"","email":"ann@x"}])", "ann@x"},
      {R"([{"name":null,"email":"ann@x"}])", "ann@x"},
      {R"([{"name":"","email":""}])", ""},
      {R"([{"name":""},{"name":"Bob"}])", "Unknown"},
      {R"([{}])", "Unknown"},
      {R"([{"name":"Ann"},7])", "Unknown"},
      {R"([])", "Unknown"},
      {R"({"name":"Ann"})", "Unknown"},
      {R"("Ann")", "Unknown"},
  };
  for (const auto& [from, sender] : cases)
    EXPECT_EQ(found(fmt::format(R"(,"from":{})", from)),
              fmt::format("ID: M1\nFrom: {}\nSubject: (no subject)\nDate: \nPreview: ", sender))
        << from;
}

TEST_F(BridgeTest, ShowsDatesTheUsersWay) {
  const std::pair<const char*, const char*> cases[] = {
      {R"("2025-01-05T09:15:00.123Z")", "<2025-01-05 09:15>"},
      {R"("2025-01-05T23:15:00-02:00")", "<2025-01-06 01:15>"},
      {R"("2025-13-05T09:15:00Z")", "2025-13-05T09:15:00Z"},
      {R"("yesterday")", "yesterday"},
      {R"(7)", ""},
  };
  for (const auto& [receivedAt, shown] : cases)
    EXPECT_EQ(found(fmt::format(R"(,"receivedAt":{})", receivedAt)),
              fmt::format("ID: M1\nFrom: Unknown\nSubject: (no subject)\nDate: {}\nPreview: ", shown));
}

TEST_F(BridgeTest, CutsPreviewsAtACharacter) {
  const auto times = [](std::size_t count, std::string_view text) {
    std::string result;
    while (count-- > 0)
      result += text;
    return result;
  };
  for (const auto* character : {"x", "é", "😀"}) {
    const auto head = std::string("ID: M1\nFrom: Unknown\nSubject: (no subject)\nDate: \nPreview: ");
    EXPECT_EQ(found(fmt::format(R"(,"preview":"{}")", times(200, character))), head + times(200, character));
    EXPECT_EQ(found(fmt::format(R"(,"preview":"{}")", times(201, character))),
              head + times(200, character) + "…");
  }
}

TEST_F(BridgeTest, ReadsOneEmail) {
  client.answerNext(listed("g0", R"([{"id":"other","subject":"Lunch","from":[{"email":"ann@x"}],
    "receivedAt":"2025-01-05T09:15:00Z","textBody":[{"partId":"2"},{"partId":"1"}],
    "bodyValues":{"1":{"value":"no"},"2":{"value":"Shall\n\nwe?\n","isTruncated":false}}}])"));
  EXPECT_EQ(text(bridge.getEmail("M\"1")),
            "ID: M\"1\nFrom: ann@x\nSubject: Lunch\nDate: <2025-01-05 09:15>\n\nShall\n\nwe?\n");
  EXPECT_EQ(client.sent.back().body.at("methodCalls"), json::parse(R"([["Email/get",{"accountId":"u123",
    "ids":["M\"1"],"properties":["id","subject","from","receivedAt","textBody","bodyValues"],
    "fetchTextBodyValues":true},"g0"]])"));

  client.answerNext(listed("g0", "[]"));
  EXPECT_EQ(text(bridge.getEmail("M1")), badResponse);
}

TEST_F(BridgeTest, TellsWhenAnEmailHasNoPlainText) {
  for (const auto* members :
       {R"("x":0)", R"("textBody":[],"bodyValues":{})", R"("textBody":[{"partId":"1"}])",
        R"("textBody":[{"partId":"1"}],"bodyValues":{"2":{"value":"x"}})",
        R"("textBody":[{"partId":1}],"bodyValues":{"1":{"value":"x"}})",
        R"("textBody":[{"partId":null},{"partId":"1"}],"bodyValues":{"1":{"value":"x"}})",
        R"("textBody":[{"partId":"1"},7],"bodyValues":{"1":{"value":"x"}})",
        R"("textBody":[{"partId":"1"}],"bodyValues":{"1":"x"})",
        R"("textBody":[{"partId":"1"}],"bodyValues":{"1":{"value":null}})"}) {
    client.answerNext(listed("g0", fmt::format("[{{{}}}]", members)));
    EXPECT_EQ(text(bridge.getEmail("M1")),
              "ID: M1\nFrom: Unknown\nSubject: (no subject)\nDate: \n\n(no plain text body)")
        << members;
  }
}

TEST_F(BridgeTest, ListsTheMailboxesByCodePoints) {
  client.answerNext(listed("m0", R"([
    {"id":"1","name":"inbox","role":"inbox","totalEmails":12,"unreadEmails":3},
    {"id":"2","name":"Zoo","role":null,"totalEmails":1.5,"unreadEmails":"4"},
    {"id":"3","role":"trash","totalEmails":9},
    {"id":"4","name":"Äpfel","totalEmails":2.0},
    {"id":"5","name":"\uffee"},
    {"id":"6","name":"😀"},
    {"id":"7","name":"","role":""}])"));
  EXPECT_EQ(text(bridge.listMailboxes()), " [] — 0 emails, 0 unread\n"
                                          "Zoo — 0 emails, 0 unread\n"
                                          "inbox [inbox] — 12 emails, 3 unread\n"
                                          "Äpfel — 2 emails, 0 unread\n"
                                          "\uffee — 0 emails, 0 unread\n"
                                          "😀 — 0 emails, 0 unread");
  EXPECT_EQ(client.sent.back().body.at("methodCalls"), json::parse(R"([["Mailbox/get",{"accountId":"u123",
    "ids":null,"properties":["id","name","role","totalEmails","unreadEmails"]},"m0"]])"));
  client.answerNext(listed("m0", "[]"));
  EXPECT_EQ(text(bridge.listMailboxes()), "");
}

TEST_F(BridgeTest, ShowsAnEmailInItsWindow) {
  client.answer("Email/get", listed("e0", R"([{"id":"M1","mailboxIds":{"B1":true},"threadId":"T1"}])"));
  client.answer("Mailbox/get", listed("m0", R"([{"id":"B1","name":"Inbox"}])"));
  EXPECT_EQ(text(bridge.openInOndrel("M1")), "Opened email M1 in Ondrel.");
  EXPECT_EQ(shown, (Lines{run(mail.messageURL("M1")).value(), "activated"}));

  client.fail("Mailbox/get", jmap::JMAPError::notAuthenticated());
  EXPECT_EQ(text(bridge.openInOndrel("M1")), "Opened email M1 in Ondrel.") << "the last good answer";
  shown.clear();
  client.answerNext(listed("e0", "[]"));
  EXPECT_EQ(text(bridge.openInOndrel("M9")), badResponse);
  EXPECT_EQ(shown, Lines());
}

TEST_F(BridgeTest, FindsItsAnswerByTheCallId) {
  const auto good = std::string(R"(["x",{"list":[{"name":"A"}]},"m0"])");
  const std::string line = "A — 0 emails, 0 unread";
  const std::pair<std::string, std::string> cases[] = {
      {R"(["x",{"list":[{"name":"B"}]},"m1"],)" + good, line},
      {good + R"(,["x",{"list":[{"name":"B"}]},"m0"])", line},
      {R"(7,[],["x"],["x",{"list":[]}],["x",{"list":[]},0],{"2":"m0"},)" + good, line},
      {R"(["x",{"list":[{"name":"A"}]},"m0","more"])", line},
      {R"(["error",{"type":"serverFail"},"m0"],)" + good, badResponse},
      {R"(["x",{},"m0"])", badResponse},
      {R"(["x",[],"m0"])", badResponse},
      {R"(["x",{"list":{}},"m0"])", badResponse},
      {R"(["x",{"list":[{},null]},"m0"])", badResponse},
      {R"(["x",{"list":[{"name":"A"}]},"M0"])", badResponse},
      {"", badResponse},
  };
  for (const auto& [answers, expected] : cases) {
    client.answerNext(reply(answers));
    EXPECT_EQ(text(bridge.listMailboxes()), expected) << answers;
  }
}

TEST_F(BridgeTest, EachToolTellsWhatStandsInTheWay) {
  const auto all = [this] {
    return Lines{search(), text(bridge.getEmail("M1")), text(bridge.listMailboxes())};
  };
  const auto each = [](const std::string& line) { return Lines(3, line); };
  client.session->primaryAccounts.clear();
  EXPECT_EQ(all(), each("Error: No mail account found in the JMAP session."));
  EXPECT_EQ(client.tokenReads, 0);
  client.session = support::FakeJMAPClient().session;
  client.token = std::unexpected(jmap::JMAPError::notAuthenticated());
  EXPECT_EQ(all(), each("Error: Fastmail is not signed in."));
  EXPECT_EQ(client.sent.size(), 0u);
  client.session = std::unexpected(jmap::JMAPError::navigationFailed("no network"));
  EXPECT_EQ(all(), each("Error: Navigation failed: no network"));
  EXPECT_EQ(text(bridge.openInOndrel("M1")), "Error: Navigation failed: no network");
  client.session = support::FakeJMAPClient().session;
  client.token = "token";
  for (int i = 0; i < 3; ++i)
    client.answerNext("<html>");
  for (const auto& line : all())
    EXPECT_TRUE(line.starts_with("Error: The reply is not valid JSON")) << line;
}

TEST_F(BridgeTest, AnyNodeOfAnotherShapeGivesATextOrTheOneError) {
  const auto emails = listed("g0", R"([{"id":"M1","subject":"S","from":[{"name":"N","email":"e@x"}],
    "receivedAt":"2024-01-31T10:20:30Z","preview":"P","textBody":[{"partId":"1"}],"bodyValues":{"1":{"value":"V"}}}])");
  const auto mailboxes =
      listed("m0", R"([{"id":"B1","name":"A","role":"inbox","totalEmails":1,"unreadEmails":1}])");
  const std::pair<std::string, std::function<async::Task<ToolOutcome>()>> tools[] = {
      {emails, [this] { return bridge.searchEmails({}); }},
      {emails, [this] { return bridge.getEmail("M1"); }},
      {mailboxes, [this] { return bridge.listMailboxes(); }},
  };
  int runs = 0;
  int errors = 0;
  for (const auto& [whole, tool] : tools)
    support::JsonMutations(json::parse(whole)).forEach([&](const json::value& mutated) {
      ++runs;
      client.answerNext(json::serialize(mutated));
      const auto told = text(tool());
      if (told.starts_with("Error: ")) {
        ++errors;
        EXPECT_EQ(told, badResponse) << mutated;
      }
      EXPECT_TRUE(base::isValidUtf8(told));
    });
  EXPECT_GT(runs, 500);
  EXPECT_GT(errors, 100);
}

} // namespace
} // namespace ondrel::mcp
