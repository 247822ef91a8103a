#include "MailWorld.h"

namespace ondrel::jmap {
namespace {

using HighlightExportQueryTest = MailTest;

std::vector<std::string> messageIds(int count) {
  std::vector<std::string> ids;
  ids.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i)
    ids.push_back(std::to_string(i) + "@x");
  return ids;
}

TEST_F(HighlightExportQueryTest, ResolvesMessagesToSubjectAndURL) {
  client.answerNext(reply({R"({"ids":["M1"]})", R"({"list":[
      {"id":"M1","messageId":["1@x","1b@x"],"subject":"One","mailboxIds":{"B1":true},"threadId":"T1"},
      {"id":"M2","messageId":["2@x"],"subject":null,"mailboxIds":{"B2":true},"threadId":"T2"},
      {"id":"M3","messageId":["3@x"],"mailboxIds":{"unnamed":true},"threadId":"T3"},
      {"id":"M4","messageId":["4@x"],"mailboxIds":{"B1":true},"threadId":"no id"},
      {"id":"M5","messageId":[],"mailboxIds":{"B1":true},"threadId":"T5"},
      {"id":"M6","messageId":["6@x"],"mailboxIds":{},"threadId":"T6"},
      {"id":"M7","messageId":["7@x"],"mailboxIds":{"B1":true}},
      {"messageId":["8@x"],"mailboxIds":{"B1":true},"threadId":"T8"}]})"}));
  client.answerNext(
      reply({R"({"list":[{"id":"B1","name":"In box"},{"id":"B2","name":"Old"},{"id":"unnamed"}]})"}));
  const auto info = run(queries.highlightExportInfo({"1@x", "2@x"}));
  ASSERT_TRUE(info);
  ASSERT_EQ(info->size(), 2u);
  EXPECT_EQ(info->at("1@x").subject, "One");
  EXPECT_EQ(info->at("1@x").url, "https://app.example.com/mail/In%20box/T1.M1?u=123");
  EXPECT_EQ(info->at("2@x").subject, "(No subject)");
  EXPECT_EQ(info->at("2@x").url, "https://app.example.com/mail/Old/T2.M2?u=123");
  expectCalls(0, R"([
      ["Email/query", {"accountId": "u123", "limit": 2, "filter": {"operator": "OR", "conditions":
        [{"header": ["Message-ID", "1@x"]}, {"header": ["Message-ID", "2@x"]}]}}, "q0"],
      ["Email/get", {"accountId": "u123", "#ids": {"resultOf": "q0", "name": "Email/query", "path": "/ids"},
        "properties": ["messageId", "subject", "mailboxIds", "threadId"]}, "g0"]])");
  expectCalls(1, R"([["Mailbox/get", {"accountId": "u123", "ids": ["B1", "B2", "unnamed"],
                      "properties": ["name"]}, "m0"]])");
  EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(HighlightExportQueryTest, AFailedChunkLeavesOutItsMessagesOnly) {
  const auto good = reply({R"({})", R"({"list":[{"id":"M1","messageId":["200@x"],"subject":"One",
      "mailboxIds":{"B1":true},"threadId":"T1"}]})"});
  const auto mailboxes = reply({R"({"list":[{"id":"B1","name":"Inbox"}]})"});
  client.failNext({JMAPError::Kind::transport, "reset"});
  client.answerNext(good);
  client.answerNext(mailboxes);
  const auto info = run(queries.highlightExportInfo(messageIds(201)));
  ASSERT_TRUE(info);
  EXPECT_EQ(info->size(), 1u);
  EXPECT_TRUE(info->contains("200@x"));
  EXPECT_EQ(log.lines(),
            Lines{"error network: highlightExportInfo: chunk at 0 (200 message id(s)) failed: reset"});
  const auto conditions = [&](std::size_t number) {
    const auto& query = client.sent.at(number).body.at("methodCalls").as_array()[0].as_array()[1].as_object();
    EXPECT_EQ(query.at("limit"), query.at("filter").at("conditions").as_array().size());
    return query.at("filter").at("conditions").as_array().size();
  };
  EXPECT_EQ(conditions(0), 200u);
  EXPECT_EQ(conditions(1), 1u);

  client.answerNext(good);
  client.answerNext(reply({R"({})"}));
  client.answerNext(mailboxes);
  EXPECT_EQ(run(queries.highlightExportInfo(messageIds(400)))->size(), 1u);
  EXPECT_EQ(log.lines().back(),
            "error network: highlightExportInfo: unexpected JMAP response format for chunk at 200");
}

TEST_F(HighlightExportQueryTest, GivesNothingWithoutMessagesOrMailboxes) {
  EXPECT_EQ(run(queries.highlightExportInfo({}))->size(), 0u);
  EXPECT_EQ(client.sessionFetches, 0);
  client.answerNext(reply({R"({})", R"({"list":[]})"}));
  EXPECT_EQ(run(queries.highlightExportInfo(messageIds(1)))->size(), 0u);
  EXPECT_EQ(client.sent.size(), 1u) << "no mailbox to ask for";

  for (const auto* mailboxes : {"fail", R"({"list":[]})", R"({"list":[{"id":"B1"}]})", R"({"list":null})"}) {
    client.answerNext(reply({R"({})", R"({"list":[{"id":"M1","messageId":["0@x"],"mailboxIds":{"B1":true},
        "threadId":"T1"}]})"}));
    if (mailboxes == std::string_view("fail"))
      client.failNext(JMAPError::notAuthenticated());
    else
      client.answerNext(reply({mailboxes}));
    EXPECT_EQ(run(queries.highlightExportInfo(messageIds(1)))->size(), 0u) << mailboxes;
  }
  const auto unresolved = "error network: highlightExportInfo: could not resolve mailbox names";
  EXPECT_EQ(log.lines(),
            (Lines{"error network: highlightExportInfo: Mailbox/get failed: Fastmail is not signed in.",
                   unresolved, unresolved, unresolved}));
}

TEST_F(HighlightExportQueryTest, CancellingEndsItAtOnce) {
  client.delay = std::chrono::seconds(1);
  client.answer("Email/query", reply({R"({})", R"({"list":[]})"}));
  std::optional<Result<std::map<std::string, HighlightExportInfo>>> result;
  auto handle = scope.spawn(support::keepResult(queries.highlightExportInfo(messageIds(1000)), &result));
  loop.advance(std::chrono::milliseconds(1500));
  handle.cancel();
  loop.runUntilIdle();
  ASSERT_TRUE(result);
  EXPECT_EQ(result->error(), JMAPError::cancelled());
  EXPECT_EQ(client.sent.size(), 2u);
  EXPECT_EQ(log.lines(), Lines{});
}

} // namespace
} // namespace ondrel::jmap
