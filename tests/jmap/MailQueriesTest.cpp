#include "MailWorld.h"

#include <fmt/format.h>

namespace ondrel::jmap {
namespace {

using MailQueriesTest = MailTest;
const JMAPError badResponse = JMAPError::badResponse();

TEST_F(MailQueriesTest, EmailInfoHasItsDefaults) {
  const struct {
    const char* email;
    const char* subject;
    const char* messageId;
  } cases[] = {
      {R"({"id":"M1","subject":"Hi","messageId":["a@b","c@d"]})", "Hi", "a@b"},
      {R"({"subject":null,"messageId":null})", "(No subject)", "M1"},
      {R"({"subject":"","messageId":[]})", "", "M1"},
      {R"({"messageId":[7]})", "(No subject)", "M1"},
  };
  for (const auto& each : cases) {
    client.answerNext(reply({std::string(R"({"list":[)") + each.email + "]}"}));
    const auto info = run(queries.emailInfo("M1"));
    ASSERT_TRUE(info) << each.email;
    EXPECT_EQ(info->subject, each.subject);
    EXPECT_EQ(info->messageId, each.messageId);
  }
  expectCalls(0,
              R"([["Email/get", {"accountId": "u123", "ids": ["M1"], "properties": ["messageId", "subject"],
                      "fetchHTMLBodyValues": false, "fetchAllBodyValues": false}, "h0"]])");
  EXPECT_EQ(client.sent[0].token, "token");

  client.answerNext(reply({R"({"list":[]})"}));
  EXPECT_EQ(run(queries.emailInfo("M1")), std::unexpected(badResponse));
  EXPECT_EQ(log.lines(), Lines{"error network: emailInfo: unexpected JMAP response format"});
}

TEST_F(MailQueriesTest, AThreadKeepsItsOwnOrder) {
  client.answer("Thread/get", reply({R"({"list":[{"id":"T1","emailIds":["M3","M1","M2","M4"]}]})"}));
  client.answer("Email/get", reply({R"({"list":[{"id":"M1","messageId":["1@x"]},
      {"id":"M2","messageId":[]}, {"messageId":["lost@x"]}, {"id":"M9","messageId":["9@x"]},
      {"id":"M3","messageId":["3@x","3b@x"]}]})"}));
  const std::vector<ThreadEmailInfo> expected{{"M3", "3@x"}, {"M1", "1@x"}};
  EXPECT_EQ(run(queries.threadEmails("T1")), expected);
  expectCalls(0, R"([["Thread/get", {"accountId": "u123", "ids": ["T1"]}, "t0"]])");
  expectCalls(1, R"([["Email/get", {"accountId": "u123", "ids": ["M3", "M1", "M2", "M4"],
                      "properties": ["messageId"]}, "e0"]])");
  EXPECT_EQ(client.tokenReads, 2) << "each request has a token of its own";

  client.answerNext(reply({R"({"list":[{"emailIds":[]}]})"}));
  EXPECT_EQ(run(queries.threadEmails("T2")), std::unexpected(badResponse));
  client.answerNext(reply({R"({"list":[{"emailIds":["M1"]}]})"}));
  client.answerNext(reply({R"({})"}));
  EXPECT_EQ(run(queries.threadEmails("T2")), std::unexpected(badResponse));
  EXPECT_EQ(
      log.lines(),
      (Lines{"error network: threadEmails: unexpected JMAP response format or no emailIds for thread T2",
             "error network: threadEmails: unexpected JMAP response format for thread T2"}));
}

TEST_F(MailQueriesTest, AThreadOfThousandsIsRead) {
  std::string ids;
  std::string list;
  for (int i = 9999; i >= 0; --i) {
    const char* comma = ids.empty() ? "" : ",";
    ids += fmt::format(R"({}"{}")", comma, i);
    list += fmt::format(R"({}{{"id":"{}","messageId":["m{}"]}})", comma, i, i);
  }
  client.answer("Thread/get", reply({R"({"list":[{"emailIds":[)" + ids + "]}]}"}));
  client.answer("Email/get", reply({R"({"list":[)" + list + "]}"}));
  const auto emails = run(queries.threadEmails("T1"));
  ASSERT_TRUE(emails);
  ASSERT_EQ(emails->size(), 10000u);
  EXPECT_EQ(emails->front(), (ThreadEmailInfo{"9999", "m9999"}));
}

TEST_F(MailQueriesTest, MembershipIsPatched) {
  run(queries.setMailboxMembership({}, "B1", true));
  EXPECT_EQ(client.sessionFetches, 0);

  client.answerNext(reply({R"({"updated":{"M1":null},"notUpdated":{"M2":{"type":"notFound"}}})"}));
  run(queries.setMailboxMembership({"M1", "M2"}, "B1", true));
  expectCalls(0, R"([["Email/set", {"accountId": "u123", "update":
      {"M1": {"mailboxIds/B1": true}, "M2": {"mailboxIds/B1": true}}}, "l0"]])");
  client.answerNext(reply({R"({"updated":{"M1":null},"notUpdated":{}})"}));
  run(queries.setMailboxMembership({"M1"}, "B1", false));
  expectCalls(1,
              R"([["Email/set", {"accountId": "u123", "update": {"M1": {"mailboxIds/B1": null}}}, "l0"]])");
  client.answerNext(reply({R"({"updated":null,"notUpdated":null})"}));
  run(queries.setMailboxMembership({"M1"}, "B1", false));
  client.failNext({JMAPError::Kind::transport, "Connection refused"});
  run(queries.setMailboxMembership({"M1", "M2", "M3"}, "B1", false));
  client.answerNext("<html>");
  run(queries.setMailboxMembership({"M1"}, "B1", true));
  client.answerNext("{}" + std::string(3000, ' '));
  run(queries.setMailboxMembership({"M1"}, "B1", true));
  const std::string error = "error network: setMailboxMembership: ";
  const std::string info = "info network: setMailboxMembership: ";
  EXPECT_EQ(log.lines(),
            (Lines{error + R"(1 email(s) failed to add mailbox B1: {"M2":{"type":"notFound"}})",
                   info + "added mailbox B1 — 1/2 email(s) updated",
                   info + "removed mailbox B1 — 1/1 email(s) updated",
                   error + "failed to remove mailbox B1 on 3 email(s): Connection refused",
                   error + "unparsable Email/set response — body: <html>",
                   error + "unparsable Email/set response — body: {}" + std::string(1998, ' ')}));
}

TEST_F(MailQueriesTest, MailboxesAreFoundByNameWithoutRegardToCase) {
  const auto mailboxes = reply({R"({"list":[{"id":"B0"},{"id":"B1","name":"Inbox"},
      {"id":"B2","name":"HIGHLIGHTED"},{"id":"B3","name":"Highlighted"},{"name":"no id"},
      {"id":"B4","name":"\u00dcBERF\u00c4LLIG"},{"id":"B5","name":"cafe\u0301"},{"id":"B6","name":"a\u0000b"}]})"});
  client.answer("Mailbox/get", mailboxes);
  const std::pair<std::string, std::optional<std::string>> cases[] = {
      {"highlighted", "B2"},
      {"No ID", std::nullopt},
      {"Highlighte", std::nullopt},
      {"inbox", "B1"},
      {"\u00fcberf\u00e4llig", "B4"},
      {"Caf\u00e9", "B5"},
      {"", std::nullopt},
      {"a", std::nullopt},
      {"\xFF", std::nullopt},
  };
  for (const auto& [name, id] : cases)
    EXPECT_EQ(run(queries.findMailboxId(name)).value(), id) << name;
  expectCalls(0, R"([["Mailbox/get", {"accountId": "u123", "properties": ["id", "name"]}, "m0"]])");
  EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(MailQueriesTest, EmailsAreFoundByMessageId) {
  client.answerNext(reply({R"({"ids":["M1","M2"]})"}));
  EXPECT_EQ(run(queries.findEmailId("<a@b>")), "M1");
  expectCalls(0, R"([["Email/query", {"accountId": "u123", "filter": {"header": ["Message-ID", "<a@b>"]},
                      "limit": 1}, "q0"]])");
  client.answerNext(reply({R"({"ids":[]})"}));
  EXPECT_EQ(run(queries.findEmailId("x")), std::unexpected(badResponse));
  EXPECT_EQ(log.lines(),
            Lines{"error network: findEmailId: unexpected JMAP response format or no matching email"});
}

TEST_F(MailQueriesTest, MessageURLsNameMailboxThreadAndEmail) {
  const struct {
    const char* accountId;
    const char* mailbox;
    const char* url;
  } cases[] = {
      {"u123", "Inbox", "https://app.example.com/mail/Inbox/T1.M1?u=123"},
      {"a123", "In box", "https://app.example.com/mail/In%20box/T1.M1?u=a123"},
      {"uu1", "a/b?#%\u00e9", "https://app.example.com/mail/a/b%3F%23%25%C3%A9/T1.M1?u=u1"},
  };
  for (const auto& each : cases) {
    client.session->primaryAccounts[std::string(mailCapability)] = each.accountId;
    client.answerNext(reply({R"({"list":[{"mailboxIds":{"B1":true},"threadId":"T1"}]})"}));
    client.answerNext(reply({std::string(R"({"list":[{"name":")") + each.mailbox + "\"}]}"}));
    EXPECT_EQ(run(queries.messageURL("M1")), each.url);
  }
  client.session->primaryAccounts[std::string(mailCapability)] = "u123";
  expectCalls(0, R"([["Email/get", {"accountId": "u123", "ids": ["M1"],
                      "properties": ["mailboxIds", "threadId"]}, "e0"]])");
  expectCalls(1, R"([["Mailbox/get", {"accountId": "u123", "ids": ["B1"], "properties": ["name"]}, "m0"]])");

  settings.setEnvironment(settings::FastmailEnvironment::beta);
  client.answerNext(reply({R"({"ids":["M7"]})"}));
  client.answerNext(reply({R"({"list":[{"mailboxIds":{"B1":true},"threadId":"T1"}]})"}));
  client.answerNext(reply({R"({"list":[{"name":"x"}]})"}));
  EXPECT_EQ(run(queries.messageURLForMessageId("a@b")), "https://beta.example.com/mail/x/T1.M7?u=123");

  client.answerNext(reply({R"({"list":[{"mailboxIds":{"B1":true},"threadId":"no id"}]})"}));
  client.answerNext(reply({R"({"list":[{"name":"x"}]})"}));
  EXPECT_EQ(run(queries.messageURL("M1")), std::unexpected(badResponse)) << "a space makes it no URL";
  EXPECT_EQ(log.lines(), Lines{});

  client.answerNext(reply({R"({"list":[{"mailboxIds":{},"threadId":"T1"}]})"}));
  EXPECT_EQ(run(queries.messageURL("M1")), std::unexpected(badResponse));
  client.answerNext(reply({R"({"list":[{"mailboxIds":{"B1":true},"threadId":"T1"}]})"}));
  client.answerNext(reply({R"({"list":[]})"}));
  EXPECT_EQ(run(queries.messageURL("M1")), std::unexpected(badResponse));
  EXPECT_EQ(
      log.lines(),
      (Lines{"error network: findMailboxNameAndThreadId: could not parse mailboxIds/threadId for email M1",
             "error network: findMailboxNameAndThreadId: could not resolve mailbox name for email M1"}));
}

TEST_F(MailQueriesTest, LabelsModeIsAskedOfTheVendorsAccount) {
  EXPECT_EQ(run(queries.fetchInLabelsMode()), std::unexpected(badResponse));
  client.session->primaryAccounts["https://www.example.com/dev/user"] = "d7";
  client.answerNext(reply({R"({"list":[{"inLabelsMode":true}]})"}));
  EXPECT_EQ(run(queries.fetchInLabelsMode()), true);
  const auto expected = boost::json::parse(
      R"({"using": ["urn:ietf:params:jmap:core", "https://www.example.com/dev/user"],
          "methodCalls": [["ClientPreferences/get", {"accountId": "d7", "ids": null}, "c0"]]})");
  EXPECT_EQ(client.sent[0].body, expected) << sentBody(0);
  client.answerNext(reply({R"({"list":[{"inLabelsMode":"true"}]})"}));
  EXPECT_EQ(run(queries.fetchInLabelsMode()), std::unexpected(badResponse));
  EXPECT_EQ(log.lines(), (Lines{"error network: fetchInLabelsMode: no dev/user account ID in JMAP session",
                                "error network: fetchInLabelsMode: unexpected JMAP response format"}));
}

TEST_F(MailQueriesTest, TheInboxTellsItsUnread) {
  const std::pair<const char*, std::int64_t> cases[] = {
      {R"([{"role":null,"unreadEmails":9},{"id":"B1","role":"inbox","unreadEmails":4}])", 4},
      {R"([{"role":"inbox","unreadEmails":3.0}])", 3},
      {R"([{"role":"inbox","unreadEmails":5000000000}])", 5000000000},
      {R"([{"role":"inbox","unreadEmails":"4"}])", 0},
      {R"([{"role":"inbox","unreadEmails":3.5}])", 0},
      {R"([{"role":"inbox","unreadEmails":1e300}])", 0},
      {R"([{"role":"inbox","unreadEmails":9223372036854775808}])", 0},
      {R"([{"role":"inbox"},{"role":"inbox","unreadEmails":7}])", 0},
      {R"([])", 0},
  };
  for (const auto& [list, count] : cases) {
    client.answerNext(reply({std::string(R"({"list":)") + list + "}"}));
    EXPECT_EQ(run(queries.inboxUnreadCount()), count) << list;
  }
  expectCalls(
      0, R"([["Mailbox/get", {"accountId": "u123", "properties": ["id", "role", "unreadEmails"]}, "0"]])");
  client.answerNext(reply({R"({"list":{}})"}));
  EXPECT_EQ(run(queries.inboxUnreadCount()), std::unexpected(badResponse));
  EXPECT_EQ(log.lines(), Lines{"error network: inboxUnreadCount: unexpected JMAP response format"});
}

TEST_F(MailQueriesTest, MailboxIdsAreAskedForOnce) {
  client.answer("Mailbox/get",
                reply({R"({"list":[{"id":"B0","role":null},{"id":"B1","role":"inbox","name":"In"},
      {"id":"B2","role":"trash"},{"id":"B3","role":"junk"},{"id":"B4","role":"inbox"}]})"}));
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(run(queries.fetchInboxMailboxId()), "B1");
    EXPECT_EQ(run(queries.fetchTrashMailboxId()), "B2");
    EXPECT_EQ(run(queries.fetchJunkMailboxId()), "B3");
  }
  EXPECT_EQ(client.sent.size(), 3u);
  EXPECT_EQ(queries.mailboxes(), (MailboxCache{"B1", "In", "B2", "B3"}));
  expectCalls(0, R"([["Mailbox/get", {"accountId": "u123", "properties": ["id", "role", "name"]}, "m0"]])");
  expectCalls(1, R"([["Mailbox/get", {"accountId": "u123", "properties": ["id", "role"]}, "t0"]])");
  expectCalls(2, R"([["Mailbox/get", {"accountId": "u123", "properties": ["id", "role"]}, "j0"]])");

  queries.mailboxes() = {};
  for (int i = 0; i < 3; ++i)
    client.answerNext(reply({R"({"list":[{"role":"inbox"},{"role":"trash","id":7},{"id":"B1"}]})"}));
  EXPECT_EQ(run(queries.fetchInboxMailboxId()), std::unexpected(badResponse));
  EXPECT_EQ(run(queries.fetchTrashMailboxId()), std::unexpected(badResponse));
  EXPECT_EQ(run(queries.fetchJunkMailboxId()), std::unexpected(badResponse));
  EXPECT_EQ(queries.mailboxes(), MailboxCache{});
  EXPECT_EQ(
      log.lines(),
      (Lines{"error network: fetchInboxMailboxId: could not find inbox in Mailbox/get response",
             "error network: fetchTrashMailboxId: could not find trash in Mailbox/get response",
             "error network: fetchJunkMailboxId: could not find junk mailbox in Mailbox/get response"}));
}

TEST_F(MailQueriesTest, MailboxesOfAnAccountThatIsLeftAreNotKept) {
  client.answer("Mailbox/get", reply({R"({"list":[{"id":"B1","role":"inbox","name":"In"},
      {"id":"B2","role":"trash"},{"id":"B3","role":"junk"}]})"}));
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

TEST_F(MailQueriesTest, DeletingMovesFromInboxToTrash) {
  const auto mailboxes = reply({R"({"list":[{"id":"B1","role":"inbox"},{"id":"B2","role":"trash"}]})"});
  client.answer("Mailbox/get", mailboxes);
  client.answer("Email/set", reply({R"({"notUpdated":{"M1":{"type":"notFound"}}})"}));
  run(queries.deleteEmail("M1"));
  ASSERT_EQ(client.sent.size(), 3u);
  expectCalls(2, R"([["Email/set", {"accountId": "u123", "update":
      {"M1": {"mailboxIds/B1": null, "mailboxIds/B2": true}}}, "d0"]])");
  EXPECT_EQ(badgeRefreshes, 1) << "the answer is not read";
  EXPECT_EQ(log.lines(), Lines{});

  client.failNext({JMAPError::Kind::transport, "reset"});
  run(queries.deleteEmail("M1"));
  queries.mailboxes().trashId.reset();
  client.failNext(badResponse);
  run(queries.deleteEmail("M1"));
  client.token = std::unexpected(JMAPError::notAuthenticated());
  run(queries.deleteEmail("M1"));
  client.session = std::unexpected(JMAPError::navigationFailed("down"));
  run(queries.deleteEmail("M1"));
  EXPECT_EQ(badgeRefreshes, 1);
  EXPECT_EQ(log.lines(),
            (Lines{"error network: deleteEmail: failed to move M1 to trash: reset",
                   "error network: deleteEmail: failed to move M1 to trash: Unexpected JMAP response format.",
                   "error network: deleteEmail: failed to move M1 to trash: Fastmail is not signed in.",
                   "error network: deleteEmail: failed to move M1 to trash: Navigation failed: down"}));
}

TEST_F(MailQueriesTest, AnAccountWithoutMailEndsWithItsLogLine) {
  client.session->primaryAccounts.clear();
  const auto bad = std::unexpected(badResponse);
  EXPECT_EQ(run(queries.fetchAttachments(0, 30)).error(), badResponse);
  EXPECT_EQ(run(queries.emailInfo("M1")).error(), badResponse);
  EXPECT_EQ(run(queries.threadEmails("T1")), bad);
  EXPECT_EQ(run(queries.findMailboxId("x")), bad);
  EXPECT_EQ(run(queries.findEmailId("x")), bad);
  EXPECT_EQ(run(queries.highlightExportInfo({"x"})).error(), badResponse);
  EXPECT_EQ(run(queries.fetchInboxMailboxId()), bad);
  EXPECT_EQ(run(queries.fetchTrashMailboxId()), bad);
  EXPECT_EQ(run(queries.fetchJunkMailboxId()), bad);
  EXPECT_EQ(run(queries.inboxUnreadCount()), 0);
  Lines expected;
  for (const auto* name : {"fetchAttachments", "emailInfo", "threadEmails", "findMailboxId", "findEmailId",
                           "highlightExportInfo", "fetchInboxMailboxId", "fetchTrashMailboxId",
                           "fetchJunkMailboxId", "inboxUnreadCount"})
    expected.push_back(std::string("error network: ") + name + ": no mail account ID in JMAP session");
  EXPECT_EQ(log.lines(), expected);

  EXPECT_EQ(run(queries.findMailboxNameAndThreadId("M1")).error(), badResponse);
  EXPECT_EQ(run(queries.messageURL("M1")), bad);
  run(queries.setMailboxMembership({"M1"}, "B1", true));
  run(queries.deleteEmail("M1"));
  EXPECT_EQ(log.lines(), expected) << "these are silent";
  EXPECT_EQ(client.sent.size(), 0u);
  EXPECT_EQ(client.tokenReads, 0);
}

} // namespace
} // namespace ondrel::jmap
