#include "MailWorld.h"

#include "jmap/newmail/NewMailCheck.h"
#include "support/FakeNotificationCenter.h"

#include <fmt/format.h>

namespace ondrel::jmap {
namespace {

using namespace std::chrono_literals;
using enum WorkOutcome;

class NewMailCheckTest : public MailTest {
 protected:
  NewMailCheckTest() {
    answerNext({R"({"state":"s1","list":[]})"});
    run(check.checkAndNotifyNewEmails()); // without a state to start from it seeds
    support::LogCapture::lines().clear();
    client.sent.clear();
    client.answerOnly("Email/get", reply({mails(1, 1)}));
  }

  // The arguments of answers: unread mails in the inbox of these numbers, and changes that created such.
  static std::string mails(int first, int last) {
    std::string list;
    for (int i = first; i <= last; ++i)
      list += fmt::format(
          R"({}{{"id":"M{}","mailboxIds":{{"B1":true}},"from":[{{"name":"N{}"}}],"subject":"S{}"}})",
          list.empty() ? "" : ",", i, i % 7, i);
    return R"({"list":[)" + list + "]}";
  }
  static std::string changes(std::string_view newState, int first, int last, bool hasMore = false) {
    std::string ids;
    for (int i = first; i <= last; ++i)
      ids += fmt::format(R"({}"M{}")", ids.empty() ? "" : ",", i);
    return fmt::format(R"({{"newState":"{}","created":[{}],"hasMoreChanges":{}}})", newState, ids, hasMore);
  }
  WorkOutcome checked() { return run(check.checkAndNotifyNewEmails()); }
  Lines takeTitles() {
    Lines titles;
    for (const auto& request : std::exchange(center.requests, {}))
      titles.push_back(request.content.title);
    return titles;
  }

  support::FakeNotificationCenter center;
  NotificationManager manager{center};
  Lines opened;
  NewMailNotifier notifier{
      client, queries, manager, settings, [this](const std::string& url) { opened.push_back(url); }, {}};
  NewMailCheck check{client, notifier};
};

TEST_F(NewMailCheckTest, AsksForChangesSinceTheLastState) {
  answerNext({changes("s2", 1, 1)});
  EXPECT_EQ(checked(), done);
  EXPECT_EQ(takeTitles(), Lines{"N1"});
  answerNext({changes("s3", 1, 0)});
  EXPECT_EQ(checked(), done);
  EXPECT_EQ(takeTitles(), Lines{});
  expectCalls(0, R"([["Email/changes", {"accountId": "u123", "sinceState": "s1", "maxChanges": 50}, "c0"]])");
}

TEST_F(NewMailCheckTest, ANightsMailIsTakenInStepsAndToldInOne) {
  run(notifier.setUp());
  answerNext({changes("s2", 1, 50, true)});
  EXPECT_EQ(checked(), unfinished);
  EXPECT_EQ(takeTitles(), Lines{}) << "not one by one while there is more";
  answerNext({changes("s3", 51, 60), mails(1, 50), mails(51, 60)});
  EXPECT_EQ(checked(), done);
  ASSERT_EQ(center.requests.size(), 1u);
  const auto& content = center.requests[0].content;
  EXPECT_EQ(content.title, "60 new messages");
  EXPECT_EQ(content.body, "From N1, N2, N3 and 4 others");
  EXPECT_EQ(content.furtherLines, (Lines{"N1: S1", "N2: S2", "N3: S3"}));
  center.respond(0, "DELETE_EMAIL");
  center.respond(0, platform::NotificationResponse::defaultAction);
  EXPECT_EQ(opened, Lines{"https://app.example.com/mail/In%20box/?u=123"});

  for (const auto& [count, titles] : std::vector<std::pair<int, std::size_t>>{{5, 5}, {6, 1}}) {
    center.requests.clear();
    answerNext({changes("s4", 1, count), mails(1, count)});
    EXPECT_EQ(checked(), done);
    EXPECT_EQ(center.requests.size(), titles) << count;
  }
}

TEST_F(NewMailCheckTest, AServerWithoutProgressIsNotAskedForEver) {
  for (const auto* state : {"s1", "s2"}) {
    client.answerOnly("Email/changes", reply({changes(state, 1, 1, true)}));
    int steps = 0;
    while (checked() == unfinished)
      ASSERT_LT(++steps, 3) << state;
    EXPECT_EQ(takeTitles().size(), 1u);
  }
  client.answerOnly("Email/changes", reply({changes("s3", 1, 0, true)}));
  client.answer("Email/changes", reply({changes("s2", 1, 0, true)}));
  EXPECT_EQ(checked(), unfinished);
  EXPECT_EQ(checked(), done) << "back where it was";
}

TEST_F(NewMailCheckTest, AFailureOnTheWayLosesNothing) {
  const JMAPError failures[] = {{JMAPError::Kind::transport, "reset"},
                                JMAPError::rejected(),
                                JMAPError::notAuthenticated(),
                                JMAPError::navigationFailed("down")};
  for (const auto& failure : failures) {
    client.failNext(failure);
    EXPECT_EQ(checked(), failed);
    answerNext({changes("s2", 1, 1)});
    client.failNext(failure); // of what the new ones are
    EXPECT_EQ(checked(), failed);
    EXPECT_EQ(takeTitles(), Lines{});
    answerNext({changes("s2", 1, 0)});
    EXPECT_EQ(checked(), done);
    EXPECT_EQ(takeTitles(), Lines{"N1"}) << failure.description();
  }
  answerNext({"5"});
  client.failNext(failures[0]); // of the state to go on from
  EXPECT_EQ(checked(), failed);
  EXPECT_EQ(check.lastEmailState(), "s2");
}

TEST_F(NewMailCheckTest, ARequestThatHangsEndsTheCheckAfterAMinute) {
  client.delay = 50s;
  answerNext({changes("s2", 1, 1)});
  std::optional<WorkOutcome> outcome;
  scope.spawn(support::keepResult(check.checkAndNotifyNewEmails(), &outcome));
  loop.advance(60s);
  EXPECT_EQ(outcome, failed);
  client.delay = {};
  answerNext({changes("s3", 1, 0)});
  EXPECT_EQ(checked(), done);
  EXPECT_EQ(takeTitles(), Lines{"N1"});
}

TEST_F(NewMailCheckTest, WhatCantBeGoneOnFromSeedsAnew) {
  for (const auto* answer : {"[]", R"({"methodResponses":["error"]})",
                             R"({"methodResponses":[["error",{"newState":"x","created":[]},"c0"]]})",
                             R"({"methodResponses":[["x",{"newState":5,"created":[]}]]})", "no JSON",
                             R"({"methodResponses":[["x",{"newState":"s2","created":["e1",1]}]]})"}) {
    client.answerNext(answer);
    answerNext({R"({"state":"s9"})"});
    EXPECT_EQ(checked(), done);
    EXPECT_EQ(check.lastEmailState(), "s9") << answer;
  }
  EXPECT_EQ(takeTitles(), Lines{});
}

TEST_F(NewMailCheckTest, NotificationsGoWithTheirMail) {
  answerNext({changes("s2", 1, 4), mails(1, 4)});
  checked();
  answerNext({changes("s3", 10, 15), mails(10, 15)});
  checked();
  ASSERT_EQ(center.shown.size(), 5u);
  const auto shown = center.shown;
  const auto left = [&](std::initializer_list<int> numbers) {
    Lines identifiers;
    for (const int number : numbers)
      identifiers.push_back(shown[static_cast<std::size_t>(number)]);
    return identifiers;
  };
  // 1 is deleted, 2 read, 3 moved, and the rest merely touched; the one for several stays for its last.
  answerNext({R"({"newState":"s4","created":[],"updated":["M2","M3","M4","M10","M99"],"destroyed":["M1"]})",
              R"({"list":[{"id":"M2","mailboxIds":{"B1":true},"keywords":{"$seen":true}},
                          {"id":"M3","mailboxIds":{"B9":true},"keywords":{}},
                          {"id":"M4","mailboxIds":{"B1":true},"keywords":{"$flagged":true}},
                          {"id":"M10","mailboxIds":{"B1":true},"keywords":{"$seen":true}}]})"});
  client.sent.clear();
  EXPECT_EQ(checked(), done);
  EXPECT_EQ(center.shown, left({3, 4}));
  expectCalls(1, R"([["Email/get", {"accountId": "u123", "ids": ["M10", "M2", "M3", "M4"],
                      "properties": ["mailboxIds", "keywords"]}, "g0"]])");

  // Nobody is asked about mail that nothing was told of, and a question that failed is asked again.
  answerNext(
      {R"({"newState":"s5","created":[],"updated":["M2"],"destroyed":["M11","M12","M13","M14","M15"]})"});
  EXPECT_EQ(checked(), done);
  EXPECT_EQ(center.shown, left({3}));
  answerNext({R"({"newState":"s6","created":[],"updated":["M4"]})"});
  client.failNext(JMAPError::rejected());
  EXPECT_EQ(checked(), failed);
  answerNext({changes("s6", 1, 0), R"({"list":[{"id":"M4","mailboxIds":{"B9":true}}]})"});
  EXPECT_EQ(checked(), done);
  EXPECT_EQ(center.shown, Lines{});

  // After a state that nothing is known of, all are asked about.
  answerNext({changes("s7", 5, 7), mails(5, 7)});
  checked();
  ASSERT_EQ(center.shown.size(), 3u);
  client.failNext(JMAPError::badResponse());
  answerNext({R"({"state":"s8"})", R"({"list":[{"id":"M5","keywords":{"$seen":true}},{"id":"M6"}]})"});
  EXPECT_EQ(checked(), done);
  EXPECT_EQ(center.shown.size(), 1u) << "5 has been read, 7 has gone";
}

TEST_F(NewMailCheckTest, ABadAnswerAboutOldMailHoldsUpNoNewOne) {
  answerNext({changes("s2", 1, 1)});
  checked();
  takeTitles();
  answerNext({R"({"newState":"s3","created":["M2"],"updated":["M1"]})"});
  client.failNext(JMAPError::badResponse());
  answerNext({mails(2, 2)});
  EXPECT_EQ(checked(), done);
  EXPECT_EQ(takeTitles(), Lines{"N2"});
  EXPECT_EQ(check.lastEmailState(), "s3");
}

TEST_F(NewMailCheckTest, ASeedingThatIsCancelledChangesNothing) {
  check.clear();
  client.delay = 1s;
  client.failNext(JMAPError::badResponse());
  std::optional<Result<void>> result;
  auto seeding = scope.spawn(support::keepResult(check.seedEmailState(), &result));
  loop.advance(500ms);
  seeding.cancel();
  loop.advance(1min);
  EXPECT_EQ(check.lastEmailState(), std::nullopt);
  EXPECT_EQ(log.lines(), Lines{});
}

} // namespace
} // namespace ondrel::jmap
