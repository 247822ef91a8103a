#include "MailWorld.h"

#include "jmap/newmail/NewMailNotifier.h"
#include "support/FakeNotificationCenter.h"

namespace ondrel::jmap {
namespace {

using namespace std::chrono_literals;
using platform::NotificationResponse;

class NotificationTest : public MailTest {
 protected:
  void notifyFor(std::string_view list) {
    answerNext({list});
    notify();
  }
  void notify() {
    auto mail = run(notifier->newMailAmong({"M1"}));
    ASSERT_TRUE(mail);
    run(notifier->announce(std::move(*mail)));
  }
  // "title|body" of all notifications since the last call.
  Lines takeTexts() {
    Lines texts;
    for (const auto& request : std::exchange(center.requests, {}))
      texts.push_back(request.content.title + "|" + request.content.body);
    return texts;
  }

  support::FakeNotificationCenter center;
  NotificationManager manager{center};
  Lines opened;
  std::unique_ptr<NewMailNotifier> notifier = std::make_unique<NewMailNotifier>(
      client, queries, manager, settings, [this](const std::string& url) { opened.push_back(url); },
      [this] { ++badgeRefreshes; });
};

TEST_F(NotificationTest, TellsSenderAndSubjectOfMailInTheInbox) {
  notifyFor(R"({"list":[{"from":[{"name":"Ann","email":"a@x"},{"name":"Bob"}],"subject":"Hi"},
      {"from":[{"name":"","email":"a@x"}],"subject":null}, {"from":[{"name":null,"email":""}],"subject":""},
      {"from":["a@x"],"subject":7}]})");
  EXPECT_EQ(takeTexts(), (Lines{"Ann|Hi", "a@x|(No subject)", "Unknown|", "Unknown|(No subject)"}));
  notifyFor(R"({"list":[{"id":"M1","mailboxIds":{"B1":true,"B2":true},"subject":"1"},
      {"id":"M2","mailboxIds":{"B2":true},"subject":"2"}, {"mailboxIds":{"B1":false},"subject":"3"},
      {"id":"M4","mailboxIds":{},"subject":"4"}, {"subject":"5"},
      {"id":"M6","mailboxIds":null,"subject":"6","keywords":{"$seen":false,"$flagged":true}},
      {"id":"M7","mailboxIds":{"B1":true},"keywords":{"$seen":true}},
      {"id":"M8","mailboxIds":{"B1":true},"keywords":{"$draft":true}}]})");
  EXPECT_EQ(takeTexts(), (Lines{"Unknown|1", "Unknown|5", "Unknown|6"}));

  queries.forgetMailboxes();
  answerNext({R"({"list":[{"mailboxIds":{"B2":true}}]})"});
  client.failNext(JMAPError::badResponse());
  notify();
  ASSERT_EQ(center.requests.size(), 1u) << "nobody knows the inbox";
  EXPECT_EQ(center.requests[0].content.userInfo.at("inboxName"), "Inbox");
}

TEST_F(NotificationTest, OneFollowsTheOtherAndAFailedOneHoldsUpNone) {
  center.delay = 1s;
  center.failNext = "refused";
  auto handle = scope.spawn(notifier->announce({{{"M1", "A", "1"}, {"M2", "B", "2"}, {"M3", "C", "3"}}}));
  loop.advance(500ms);
  EXPECT_EQ(center.requests.size(), 1u);
  loop.advance(1s);
  ASSERT_EQ(center.requests.size(), 2u);
  EXPECT_NE(center.requests[0].identifier, center.requests[1].identifier);
  handle.cancel();
  loop.runUntilIdle();
  EXPECT_TRUE(handle.done());
  EXPECT_EQ(takeTexts(), (Lines{"A|1", "B|2"})) << "the account was left, say";
}

TEST_F(NotificationTest, ResponsesOpenOrDelete) {
  notifyFor(R"({"list":[{"id":"M1"},{"subject":"no id"}]})");
  center.respond(0, NotificationResponse::defaultAction);
  EXPECT_EQ(std::exchange(opened, {}), Lines{"https://app.example.com/mail/In%20box/M1?u=123"})
      << "what the program was started for waits for no page";

  run(notifier->setUp());
  EXPECT_EQ(
      center.categories,
      (std::vector<platform::NotificationCategory>{
          {"NEW_EMAIL", {{"MARK_EMAIL_AS_READ", "Mark as Read"}, {"DELETE_EMAIL", "Delete", true}}, true},
          {"NEW_EMAILS", {}, true}}));
  settings.setEnvironment(settings::FastmailEnvironment::beta);
  center.respond(0, NotificationResponse::defaultAction);
  center.respond(1, NotificationResponse::defaultAction);
  EXPECT_EQ(opened, Lines{"https://beta.example.com/mail/In%20box/M1?u=123"});

  const auto before = client.sent.size();
  center.respond(1, "DELETE_EMAIL");
  center.respond(0, "dismiss");
  auto& account = center.requests[0].content.userInfo.at("accountParam");
  const auto own = std::exchange(account, "another");
  center.respond(0, "DELETE_EMAIL");
  loop.advance(1min);
  EXPECT_EQ(client.sent.size(), before);
  account = own;
  center.respond(0, "DELETE_EMAIL");
  loop.advance(1min);
  EXPECT_EQ(client.sent.size(), before + 3);
  EXPECT_EQ(badgeRefreshes, 1);
  EXPECT_EQ(opened.size(), 1u);
}

TEST_F(NotificationTest, ArchivesAndMarksAsReadLateRefusedOrNotNeeded) {
  client.answerOnly("Mailbox/get",
                    reply({R"({"list":[{"id":"B4","role":"archive"},{"id":"B1","role":"inbox"}]})"}));
  run(notifier->setUp());
  loop.advance(1min);
  notifyFor(R"({"list":[{"id":"M1"}]})");
  EXPECT_EQ(center.categories.front().actions.front(),
            (platform::NotificationAction{"ARCHIVE_EMAIL", "Archive"}));
  struct Case {
    const char* action;
    const char* mailboxIds; // by then
    const char* call;       // the last one
    const char* logged = "";
    int refreshes = 1;
  };
  const std::string refusal = R"({"notUpdated":{"M1":{"type":"forbidden"}}})";
  const char* archives =
      R"([["Email/set",{"accountId":"u123","update":{"M1":{"mailboxIds/B1":null,"mailboxIds/B4":true}}},"a1"]])";
  const char* reads = R"([["Email/set",{"accountId":"u123","update":{"M1":{"keywords/$seen":true}}},"s0"]])";
  const char* looks = R"([["Email/get",{"accountId":"u123","ids":["M1"],"properties":["mailboxIds"]},"g0"]])";
  const Case cases[] = {{"ARCHIVE_EMAIL", R"({"B1":true,"B7":true})", archives},
                        {"ARCHIVE_EMAIL", R"({"B7":true})", looks},
                        {"ARCHIVE_EMAIL", R"({"B1":true})", archives,
                         "archiveEmail: failed for M1: {\"type\":\"forbidden\"}", 0},
                        {"MARK_EMAIL_AS_READ", "{}", reads}};
  client.delay = 2s;
  for (const auto& each : cases) {
    client.answerOnly("Email/get",
                      reply({R"({"list":[{"id":"M1","mailboxIds":)" + std::string(each.mailboxIds) + "}]}"}));
    client.answerOnly("Email/set", reply({each.refreshes ? R"({"updated":{"M1":null}})" : refusal}));
    badgeRefreshes = 0;
    log.lines().clear();
    notifier->forget(); // the archive, as after a start
    center.respond(0, each.action);
    loop.advance(1min);
    expectCalls(client.sent.size() - 1, each.call);
    EXPECT_EQ(badgeRefreshes, each.refreshes) << each.action;
    EXPECT_EQ(log.lines(), *each.logged ? Lines{"error network: " + std::string(each.logged)} : Lines{});
  }
}

TEST_F(NotificationTest, NothingRespondsForANotifierThatIsGone) {
  run(notifier->setUp());
  notifyFor(R"({"list":[{"id":"M1"}]})");
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

} // namespace
} // namespace ondrel::jmap
