#include "MailWorld.h"

namespace ondrel::jmap {
namespace {

using MailQueriesTest = MailTest;
const JMAPError badResponse = JMAPError::badResponse();

TEST_F(MailQueriesTest, EmailInfoHasItsDefaults) {
  const std::pair<std::string_view, std::string> cases[] = {
      {R"({"list":[{"id":"M1","subject":"Hi","messageId":["a@b","c@d"]}]})", "Hi a@b"},
      {R"({"list":[{"subject":null,"messageId":null}]})", "(No subject) M1"},
      {R"({"list":[{"subject":"","messageId":[]}]})", " M1"},
  };
  for (const auto& [list, expected] : cases) {
    answerNext({list});
    const auto info = run(queries.emailInfo("M1"));
    ASSERT_TRUE(info) << list;
    EXPECT_EQ(info->subject + " " + info->messageId, expected);
  }
}

TEST_F(MailQueriesTest, AThreadKeepsItsOwnOrder) {
  answerNext({R"({"list":[{"id":"T1","emailIds":["M3","M1","M2","M4"]}]})",
              R"({"list":[{"id":"M1","messageId":["1@x"]}, {"id":"M2","messageId":[]},
                {"messageId":["lost@x"]}, {"id":"M9","messageId":["9@x"]},
                {"id":"M3","messageId":["3@x","3b@x"]}]})"});
  const std::vector<ThreadEmailInfo> expected{{"M3", "3@x"}, {"M1", "1@x"}, {"M2", ""}};
  EXPECT_EQ(run(queries.threadEmails("T1")), expected);
  EXPECT_EQ(client.tokenReads, 2) << "each request has a token of its own";

  answerNext({R"({"list":[{"emailIds":[]}]})", R"({"list":[]})"});
  EXPECT_EQ(run(queries.threadEmails("T2")), std::unexpected(badResponse));
}

TEST_F(MailQueriesTest, MembershipIsPatched) {
  run(queries.setMailboxMembership({}, "B1", true));
  EXPECT_EQ(client.sessionFetches, 0);
  client.answerNext("{}" + std::string(3000, ' '));
  run(queries.setMailboxMembership({"M1", "M2"}, "B1", true));
  run(queries.setMailboxMembership({"M1"}, "B1", false));
  expectCalls(0, R"([["Email/set", {"accountId": "u123", "update":
      {"M1": {"mailboxIds/B1": true}, "M2": {"mailboxIds/B1": true}}}, "l0"]])");
  expectCalls(1,
              R"([["Email/set", {"accountId": "u123", "update": {"M1": {"mailboxIds/B1": null}}}, "l0"]])");
  EXPECT_LT(log.lines().at(0).size(), 2100U) << "not the whole of an answer that can't be read";
}

TEST_F(MailQueriesTest, MailboxesAreFoundByNameWithoutRegardToCase) {
  const auto mailboxes = reply({R"({"list":[{"id":"B0"},{"id":"B1","name":"Inbox"},
      {"id":"B2","name":"HIGHLIGHTED"},{"id":"B3","name":"Highlighted"},{"name":"no id"},
      {"id":"B4","name":"\u00dcBERF\u00c4LLIG"},{"id":"B5","name":"cafe\u0301"},
      {"id":"B6","name":"a\u0000b"},{"id":"B7","name":"\ufffd"}]})"});
  const std::pair<std::string, std::optional<std::string>> cases[] = {
      {"highlighted", "B2"},        {"No ID", std::nullopt},
      {"Highlighte", std::nullopt}, {"\u00fcberf\u00e4llig", "B4"},
      {"Caf\u00e9", "B5"},          {"", std::nullopt},
      {"a", std::nullopt},          {"\xFF", std::nullopt},
  };
  for (const auto& [name, id] : cases) {
    client.answerNext(mailboxes);
    EXPECT_EQ(run(queries.findMailboxId(name)).value(), id) << name;
  }
}

TEST_F(MailQueriesTest, MessageURLsNameMailboxThreadAndEmail) {
  const auto place = R"({"list":[{"mailboxIds":{"B1":true},"threadId":"T1"}]})";
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"a123", R"({"list":[{"name":"In box"}]})", "In%20box/T1.M1?u=a123"},
      {"uu1", R"({"list":[{"name":"a/b?#%\u00e9"}]})", "a/b%3F%23%25%C3%A9/T1.M1?u=u1"},
      {"u123", R"({"list":[{"name":"Inbox"}]})", "Inbox/T1.M1?u=123"},
  };
  for (const auto& [accountId, mailbox, url] : cases) {
    client.session->primaryAccounts[std::string(mailCapability)] = accountId;
    answerNext({place, mailbox});
    EXPECT_EQ(run(queries.messageURL("M1")), std::string("https://app.example.com/mail/") + url);
  }

  settings.setEnvironment(settings::FastmailEnvironment::beta);
  client.sent.clear();
  // The server looks for the text anywhere in the header: the first that it finds is another one.
  const auto found =
      reply({R"({"ids":["M6","M7"]})",
             R"({"list":[{"id":"M6","messageId":["aa@b"]},{"id":"M7","messageId":["a@b"]}]})"});
  for (const auto* messageId : {"a@b", "<a@b>"}) {
    client.answerNext(found);
    answerNext({place, R"({"list":[{"name":"x"}]})"});
    EXPECT_EQ(run(queries.messageURLForMessageId(messageId)), "https://beta.example.com/mail/x/T1.M7?u=123");
  }
  expectCalls(0, R"([["Email/query", {"accountId": "u123", "filter": {"header": ["Message-ID", "a@b"]},
                      "limit": 50}, "q0"],
                     ["Email/get", {"accountId": "u123", "properties": ["id", "messageId"],
                      "#ids": {"resultOf": "q0", "name": "Email/query", "path": "/ids"}}, "g0"]])");

  answerNext({R"({"list":[{"mailboxIds":{"B1":true},"threadId":"no id"}]})", R"({"list":[{"name":"x"}]})"});
  EXPECT_EQ(run(queries.messageURL("M1")), std::unexpected(badResponse)) << "a space makes it no URL";
  EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(MailQueriesTest, LabelsModeIsAskedOfTheVendorsAccount) {
  EXPECT_EQ(run(queries.fetchInLabelsMode()), std::unexpected(badResponse));
  client.session->primaryAccounts["https://www.example.com/dev/user"] = "d7";
  EXPECT_EQ(run(queries.fetchInLabelsMode()), true);
  const auto expected = boost::json::parse(
      R"({"using": ["urn:ietf:params:jmap:core", "https://www.example.com/dev/user"],
          "methodCalls": [["ClientPreferences/get", {"accountId": "d7", "ids": null}, "c0"]]})");
  EXPECT_EQ(client.sent[0].body, expected) << sentBody(0);
}

TEST_F(MailQueriesTest, TheInboxTellsItsUnread) {
  const std::pair<const char*, std::int64_t> cases[] = {
      {R"({"list":[{"role":null,"unreadEmails":9},{"id":"B1","role":"inbox","unreadEmails":4}]})", 4},
      {R"({"list":[{"role":"inbox","unreadEmails":3.0}]})", 3},
      {R"({"list":[{"role":"inbox","unreadEmails":3.5}]})", 0},
      {R"({"list":[{"role":"inbox","unreadEmails":1e300}]})", 0},
      {R"({"list":[{"role":"inbox"},{"role":"inbox","unreadEmails":7}]})", 0},
      {R"({"list":[]})", 0},
  };
  for (const auto& [list, count] : cases) {
    answerNext({list});
    EXPECT_EQ(run(queries.inboxUnreadCount()), count) << list;
  }
}

TEST_F(MailQueriesTest, MailboxIdsAreAskedForOnceAndNotKeptForAnotherAccount) {
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(run(queries.fetchInboxMailboxId()), "B1");
    EXPECT_EQ(run(queries.fetchTrashMailboxId()), "B2");
    EXPECT_EQ(run(queries.fetchJunkMailboxId()), "B3");
  }
  EXPECT_EQ(client.sent.size(), 3u);
  EXPECT_EQ(queries.mailboxes(), (MailboxCache{"B1", "In box", "B2", "B3"}));

  queries.forgetMailboxes();
  client.delay = std::chrono::seconds(1);
  std::vector<std::optional<Result<std::string>>> ids(3);
  scope.spawn(support::keepResult(queries.fetchInboxMailboxId(), &ids[0]));
  scope.spawn(support::keepResult(queries.fetchTrashMailboxId(), &ids[1]));
  scope.spawn(support::keepResult(queries.fetchJunkMailboxId(), &ids[2]));
  loop.advance(std::chrono::milliseconds(500));
  queries.forgetMailboxes();
  loop.advance(std::chrono::minutes(1));
  EXPECT_EQ(ids[0], Result<std::string>("B1")) << "the call that asked has its answer";
  EXPECT_TRUE(ids[1] && ids[2]);
  EXPECT_EQ(queries.mailboxes(), MailboxCache{});
}

TEST_F(MailQueriesTest, DeletingMovesToTheTrashFromWhereverItIs) {
  const std::string fromInbox = R"({"mailboxIds/B1": null, "mailboxIds/B2": true})";
  const std::string trashOnly = R"({"mailboxIds": {"B2": true}})";
  const std::pair<const char*, std::string> cases[] = {
      {R"({"B1":true,"B7":true})", fromInbox}, {R"({"B7":true})", trashOnly}, {"null", fromInbox}};
  for (const auto& [mailboxIds, patch] : cases) {
    client.sent.clear();
    queries.forgetMailboxes();
    client.answerOnly("Email/get",
                      reply({R"({"list":[{"id":"M1","mailboxIds":)" + std::string(mailboxIds) + "}]}"}));
    run(queries.deleteEmail("M1"));
    ASSERT_EQ(client.sent.size(), 4u);
    expectCalls(3, R"([["Email/set", {"accountId": "u123", "update": {"M1": )" + patch + R"(}}, "d0"]])");
  }
  EXPECT_EQ(badgeRefreshes, 3);
  EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(MailQueriesTest, ADeletionThatFailsIsLogged) {
  const auto logs = [this](const std::string& reason) {
    run(queries.deleteEmail("M1"));
    EXPECT_EQ(log.lines(), Lines{"error network: deleteEmail: failed to move M1 to trash: " + reason});
    log.lines().clear();
  };
  client.failNext({JMAPError::Kind::transport, "reset"});
  logs("reset");
  client.answerOnly("Email/set", reply({R"({"updated":null,"notUpdated":{"M1":{"type":"notFound"}}})"}));
  logs(R"({"type":"notFound"})");
  client.answerOnly("Email/get", reply({R"({"list":[],"notFound":["M1"]})"}));
  logs("the message is no longer there");
  client.session = std::unexpected(JMAPError::navigationFailed("down"));
  logs("Navigation failed: down");
  EXPECT_EQ(badgeRefreshes, 0);
}

} // namespace
} // namespace ondrel::jmap
