#include "MailWorld.h"

#include "jmap/NewMailNotifier.h"
#include "jmap/UnreadBadge.h"
#include "support/FakeDockTile.h"
#include "support/FakeNotificationCenter.h"

#include <set>

namespace ondrel::jmap {
namespace {

using namespace std::chrono_literals;
using platform::NotificationResponse;

class NotificationTest : public MailTest {
 protected:
  NotificationTest() {
    client.answer("Mailbox/get", reply({R"({"list":[{"id":"B1","role":"inbox","name":"In box"},
        {"id":"B2","role":"trash"}]})"}));
  }
  void listed(const std::string& emails) {
    client.answerNext(reply({R"({"list":[)" + emails + "]}"}));
    EXPECT_TRUE(run(notifier->notifyForEmails({"M1"})));
  }
  // "title|body" of all notifications since the last call.
  Lines takeTexts() {
    Lines texts;
    for (const auto& request : center.requests)
      texts.push_back(request.content.title + "|" + request.content.body);
    center.requests.clear();
    return texts;
  }

  support::FakeNotificationCenter center;
  NotificationManager manager{center};
  Lines opened;
  std::unique_ptr<NewMailNotifier> notifier = std::make_unique<NewMailNotifier>(
      client, queries, manager, settings, [this](const std::string& url) { opened.push_back(url); });
};

TEST_F(NotificationTest, PermissionIsAskedForAndLogged) {
  run(manager.requestPermission());
  center.authorization = false;
  center.status = platform::AuthorizationStatus::denied;
  run(manager.requestPermission());
  center.authorization = std::unexpected("no bus");
  center.status = platform::AuthorizationStatus::notDetermined;
  run(manager.requestPermission());
  EXPECT_EQ(log.lines(), (Lines{"info notifications: requestPermission: granted=true",
                                "info notifications: requestPermission: authorizationStatus=2",
                                "info notifications: requestPermission: granted=false",
                                "info notifications: requestPermission: authorizationStatus=1",
                                "error notifications: requestPermission failed: no bus",
                                "info notifications: requestPermission: authorizationStatus=0"}));
}

TEST_F(NotificationTest, SendingNeverFailsAloud) {
  center.failNext = "refused";
  run(manager.send("A", "B", "C", {}));
  run(manager.send("A", "B", "C", {{"k", "v"}}));
  ASSERT_EQ(center.requests.size(), 2u);
  const auto& content = center.requests[1].content;
  EXPECT_EQ(content.title + content.body + content.categoryIdentifier + content.userInfo.at("k"), "ABCv");
  const auto first = center.requests[0].identifier;
  const auto second = center.requests[1].identifier;
  EXPECT_NE(first, second);
  EXPECT_EQ(first.size(), 36u);
  EXPECT_EQ(log.lines(),
            (Lines{"error notifications: send: failed to deliver notification " + first + " — refused",
                   "info notifications: willPresent: " + second,
                   "info notifications: send: delivered notification " + second + " — category=C"}));
}

TEST_F(NotificationTest, SettingUpTwiceLeavesOneCategoryAndOneHandler) {
  manager.registerCategory({"OTHER", {}});
  run(notifier->setUp());
  run(notifier->setUp());
  const std::vector<platform::NotificationCategory> expected{
      {"OTHER", {}}, {"NEW_EMAIL", {{"DELETE_EMAIL", "Delete", true}}}};
  EXPECT_EQ(center.categories, expected);
  listed(R"({"id":"M1"})");
  center.respond(0, NotificationResponse::defaultAction);
  EXPECT_EQ(opened, Lines{"https://app.example.com/mail/In%20box/M1?u=123"});
}

TEST_F(NotificationTest, AHandlerMayTakeItselfAway) {
  run(manager.send("A", "B", "ONCE", {}));
  Lines handled;
  manager.setResponseHandler("ONCE", [this, &handled, name = std::string(100, 'x')](const auto& response) {
    manager.setResponseHandler("ONCE", nullptr);
    handled.push_back(name + response.actionIdentifier);
  });
  center.respond(0, "1");
  center.respond(0, "2");
  EXPECT_EQ(handled, Lines{std::string(100, 'x') + "1"});
}

TEST_F(NotificationTest, TellsSenderAndSubject) {
  const std::pair<const char*, const char*> cases[] = {
      {R"({"from":[{"name":"Ann","email":"a@x"},{"name":"Bob"}],"subject":"Hi"})", "Ann|Hi"},
      {R"({"from":[{"name":"","email":"a@x"}],"subject":null})", "a@x|(No subject)"},
      {R"({"from":[{"name":null,"email":"a@x"}],"subject":""})", "a@x|"},
      {R"({"from":[{"name":""}]})", "Unknown|(No subject)"},
      {R"({"from":[],"subject":7})", "Unknown|(No subject)"},
      {R"({"from":null})", "Unknown|(No subject)"},
      {R"({"from":["a@x"]})", "Unknown|(No subject)"},
  };
  for (const auto& [email, texts] : cases) {
    listed(email);
    EXPECT_EQ(takeTexts(), Lines{texts}) << email;
  }
  expectCalls(0, R"([["Email/get", {"accountId": "u123", "ids": ["M1"],
                      "properties": ["from", "subject", "mailboxIds"]}, "g0"]])");
}

TEST_F(NotificationTest, MailOutsideTheInboxIsPassedOver) {
  const std::string emails = R"({"id":"M1","mailboxIds":{"B1":true,"B2":true},"subject":"1"},
      {"id":"M2","mailboxIds":{"B2":true},"subject":"2"}, {"mailboxIds":{"B1":false},"subject":"3"},
      {"id":"M4","mailboxIds":{},"subject":"4"}, {"subject":"5"}, {"id":"M6","mailboxIds":null,"subject":"6"})";
  listed(emails);
  ASSERT_EQ(center.requests.size(), 3u);
  EXPECT_EQ(center.requests[0].content.userInfo,
            (std::map<std::string, std::string>{
                {"emailId", "M1"}, {"inboxName", "In box"}, {"accountParam", "123"}}));
  EXPECT_FALSE(center.requests[1].content.userInfo.contains("emailId"));
  EXPECT_EQ(takeTexts(), (Lines{"Unknown|1", "Unknown|5", "Unknown|6"}));
  Lines network;
  for (const auto& line : log.lines())
    if (line.starts_with("info network: "))
      network.push_back(line);
  EXPECT_EQ(network, (Lines{"info network: notifyForEmails: sending notification for M1",
                            "info network: notifyForEmails: skipping M2 — not in inbox",
                            "info network: notifyForEmails: skipping ? — not in inbox",
                            "info network: notifyForEmails: skipping M4 — not in inbox",
                            "info network: notifyForEmails: sending notification for ?",
                            "info network: notifyForEmails: sending notification for M6"}));

  queries.mailboxes() = {};
  client.answerNext(reply({R"({"list":[)" + emails + "]}"}));
  client.failNext(JMAPError::badResponse());
  EXPECT_TRUE(run(notifier->notifyForEmails({"M1"})));
  ASSERT_EQ(center.requests.size(), 6u) << "nobody knows the inbox";
  EXPECT_EQ(center.requests[1].content.userInfo.at("inboxName"), "Inbox");
}

TEST_F(NotificationTest, OneFollowsTheOtherAndAFailedOneHoldsUpNone) {
  center.delay = 1s;
  center.failNext = "refused";
  client.answerNext(reply({R"({"list":[{"id":"M1","subject":"1"},{"id":"M2","subject":"2"},{"id":"M3"}]})"}));
  std::optional<Result<void>> result;
  auto handle = scope.spawn(support::keepResult(notifier->notifyForEmails({"M1", "M2", "M3"}), &result));
  loop.advance(500ms);
  EXPECT_EQ(center.requests.size(), 1u);
  loop.advance(1s);
  EXPECT_EQ(center.requests.size(), 2u);
  handle.cancel();
  loop.runUntilIdle();
  ASSERT_TRUE(result);
  EXPECT_EQ(result->error(), JMAPError::cancelled()) << "the account was left, say";
  EXPECT_EQ(takeTexts(), (Lines{"Unknown|1", "Unknown|2"}));
}

TEST_F(NotificationTest, ErrorsOfTheRequestAreTheCallers) {
  client.failNext(JMAPError::notAuthenticated());
  EXPECT_EQ(run(notifier->notifyForEmails({"M1"})).error(), JMAPError::notAuthenticated());
  client.answerNext(reply({R"({"list":{}})"}));
  EXPECT_TRUE(run(notifier->notifyForEmails({"M1"})));
  client.session->primaryAccounts.clear();
  EXPECT_TRUE(run(notifier->notifyForEmails({"M1"})));
  EXPECT_EQ(log.lines(), (Lines{"error network: notifyForEmails: unexpected Email/get response format",
                                "error network: notifyForEmails: no mail account ID in JMAP session"}));
  EXPECT_EQ(center.requests.size(), 0u);
}

TEST_F(NotificationTest, ResponsesOpenOrDelete) {
  listed(R"({"id":"M1"},{"subject":"no id"})");
  center.respond(0, NotificationResponse::defaultAction);
  EXPECT_EQ(opened, Lines{}) << "nobody has set up the handler";

  run(notifier->setUp());
  settings.setEnvironment(settings::FastmailEnvironment::beta);
  center.respond(0, NotificationResponse::defaultAction);
  center.respond(1, NotificationResponse::defaultAction);
  EXPECT_EQ(opened, Lines{"https://beta.example.com/mail/In%20box/M1?u=123"});

  const auto before = client.sent.size();
  center.respond(1, "DELETE_EMAIL");
  center.respond(0, "dismiss");
  loop.advance(1min);
  EXPECT_EQ(client.sent.size(), before);
  client.answer("Email/set", reply({R"({})"}));
  center.respond(0, "DELETE_EMAIL");
  loop.advance(1min);
  EXPECT_EQ(client.sent.size(), before + 2);
  EXPECT_EQ(badgeRefreshes, 1);
  EXPECT_EQ(opened.size(), 1u);
}

TEST_F(NotificationTest, NothingRespondsForANotifierThatIsGone) {
  run(notifier->setUp());
  listed(R"({"id":"M1"})");
  client.delay = 1s;
  center.respond(0, "DELETE_EMAIL");
  loop.advance(500ms);
  notifier.reset();
  EXPECT_EQ(loop.pendingTimers(), 0u) << "the deletion went with it";
  center.respond(0, NotificationResponse::defaultAction);
  center.respond(0, "DELETE_EMAIL");
  loop.advance(1min);
  EXPECT_EQ(opened, Lines{});
  EXPECT_EQ(badgeRefreshes, 0);
}

TEST_F(NotificationTest, TheBadgeShowsWhatIsUnread) {
  support::FakeDockTile dockTile;
  UnreadBadge badge(queries, settings, dockTile);
  int changes = 0;
  const auto subscription = settings.unreadCount.observe([&] { ++changes; });
  for (const char* count : {"7", "7", "0", "12"}) {
    client.answerNext(reply({std::string(R"({"list":[{"role":"inbox","unreadEmails":)") + count + "}]}"}));
    run(badge.refresh());
  }
  client.failNext(JMAPError::badResponse());
  run(badge.refresh());
  EXPECT_EQ(*settings.unreadCount, 12) << "an error changes nothing";
  EXPECT_EQ(changes, 3);
  badge.clear();
  EXPECT_EQ(*settings.unreadCount, 0);
  const std::vector<std::optional<std::string>> labels{"7", "7", std::nullopt, "12", std::nullopt};
  EXPECT_EQ(dockTile.labels, labels);
}

} // namespace
} // namespace ondrel::jmap
