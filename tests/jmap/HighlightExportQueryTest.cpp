#include "MailWorld.h"

namespace ondrel::jmap {
namespace {

std::vector<std::string> messageIds(int count) {
  std::vector<std::string> ids;
  ids.reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i)
    ids.push_back(std::to_string(i) + "@x");
  return ids;
}

class HighlightExportQueryTest : public MailTest {
 protected:
  // The reply of a chunk.
  void found(std::string_view emails) { client.answerNext(reply({"{}", emails})); }

  std::vector<std::size_t> asked;
  std::function<void(std::size_t)> progress = [this](std::size_t done) { asked.push_back(done); };
};

TEST_F(HighlightExportQueryTest, ResolvesMessagesToSubjectAndURL) {
  found(R"({"list":[
      {"id":"M1","messageId":["1@x","1b@x"],"subject":"One","mailboxIds":{"B1":true},"threadId":"T1"},
      {"id":"M2","messageId":["2@x"],"subject":null,"mailboxIds":{"B2":true},"threadId":"T2"},
      {"id":"M3","messageId":["0@x"],"mailboxIds":{"unnamed":true},"threadId":"T3"},
      {"id":"M4","messageId":["4@x"],"mailboxIds":{"B1":true},"threadId":"no id"},
      {"id":"M5","messageId":[],"mailboxIds":{"B1":true},"threadId":"T5"},
      {"id":"M6","messageId":["6@x"],"mailboxIds":{},"threadId":"T6"},
      {"messageId":["8@x"],"mailboxIds":{"B1":true},"threadId":"T8"}]})");
  answerNext({R"({"list":[{"id":"B1","name":"In box"},{"id":"B2","name":"Old"},{"id":"unnamed"}]})"});
  const auto info = run(queries.highlightExportInfo({"1@x", "2@x"}, progress));
  ASSERT_TRUE(info);
  ASSERT_EQ(info->found.size(), 2u);
  EXPECT_TRUE(info->unanswered.empty()) << "one that isn't there is no failure";
  EXPECT_EQ(info->found.at("1@x").subject, "One");
  EXPECT_EQ(info->found.at("1@x").url, "https://app.example.com/mail/In%20box/T1.M1?u=123");
  EXPECT_EQ(info->found.at("2@x").subject, "(No subject)");
  EXPECT_EQ(info->found.at("2@x").url, "https://app.example.com/mail/Old/T2.M2?u=123");
  expectCalls(0, R"([
      ["Email/query", {"accountId": "u123", "limit": 2, "filter": {"operator": "OR", "conditions":
        [{"header": ["Message-ID", "1@x"]}, {"header": ["Message-ID", "2@x"]}]}}, "q0"],
      ["Email/get", {"accountId": "u123", "#ids": {"resultOf": "q0", "name": "Email/query", "path": "/ids"},
        "properties": ["messageId", "subject", "mailboxIds", "threadId"]}, "g0"]])");
}

TEST_F(HighlightExportQueryTest, WhatFailsLeavesOutItsMessagesOnly) {
  EXPECT_EQ(run(queries.highlightExportInfo({}, progress))->found.size(), 0u);
  EXPECT_EQ(client.sessionFetches, 0);

  const auto one = R"({"list":[{"id":"M1","messageId":["200@x"],"mailboxIds":{"B1":true},"threadId":"T1"}]})";
  client.failNext({JMAPError::Kind::transport, "reset"});
  found(one);
  found("{}");
  const auto info = run(queries.highlightExportInfo(messageIds(401), progress));
  ASSERT_TRUE(info && info->found.contains("200@x"));
  EXPECT_EQ(info->found.size(), 1u);
  EXPECT_EQ(info->unanswered.size(), 200u + 1u) << "of the first chunk and the last";
  EXPECT_EQ(asked, (std::vector<std::size_t>{0, 200, 400, 401}));
  EXPECT_EQ(client.sent.at(2).body.at("methodCalls").at(0).at(1).at("limit"), 1);

  found(one);
  client.failNext(JMAPError::notAuthenticated());
  EXPECT_EQ(run(queries.highlightExportInfo(messageIds(1), progress))->unanswered.size(), 1u);
  found(one);
  answerNext({R"({"list":[{"id":"B1"}]})"});
  EXPECT_EQ(run(queries.highlightExportInfo(messageIds(1), progress))->unanswered.size(), 1u);
  EXPECT_EQ(log.lines().size(), 4U) << "each failure is told";
}

TEST_F(HighlightExportQueryTest, CancellingEndsItAtOnce) {
  client.delay = std::chrono::seconds(1);
  std::optional<Result<HighlightExportAnswer>> result;
  auto handle =
      scope.spawn(support::keepResult(queries.highlightExportInfo(messageIds(1000), progress), &result));
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
