#include "JMAPSessionFixture.h"

#include <boost/json/serialize.hpp>

namespace ondrel::jmap {
namespace {

using namespace std::chrono_literals;
namespace json = boost::json;
using support::FakeHttpClient;

using EventStreamTest = JMAPSessionTest;

TEST_F(EventStreamTest, AFinishedLoadStartsStreamAndBadge) {
  finishLoad();
  EXPECT_EQ(methods, (std::vector<std::string>{"Email/get", "Mailbox/get"})) << "seed, then badge";
  EXPECT_EQ(settings.unreadCount.get(), 7);
  EXPECT_EQ(dockTile.labels.back(), "7");
  ASSERT_EQ(http.opened.size(), 1U);
  const auto& request = http.opened[0];
  EXPECT_EQ(request.url, "https://api.example.com/events/?types=Mailbox,Email&close=no&ping=30");
  EXPECT_EQ(request.headers, (platform::HttpHeaders{{"Authorization", "Bearer secret-token"},
                                                    {"Accept", "text/event-stream"}}));
  EXPECT_EQ(request.timeout, 60s);
  EXPECT_EQ(log.count("info network: SSE connection opened"), 1);
  finishLoad();
  EXPECT_TRUE(http.feeds[0]->gone) << "each finished load starts anew";
  EXPECT_EQ(http.feeds.size(), 2U);
}

TEST_F(EventStreamTest, LinesOfTheStreamWakeTheWorkersOnceAtATime) {
  connect();
  auto& feed = *http.feeds[0];
  feed.give(": ping\nevent: \"Email\"\n{\"Email\"}\n");
  loop.runUntilIdle();
  EXPECT_TRUE(methods.empty());

  feed.give("data: {\"Mailbox\":1}\n");
  loop.runUntilIdle();
  EXPECT_EQ(methods, std::vector<std::string>{"Mailbox/get"});

  methods.clear();
  std::string burst;
  for (int i = 0; i < 1000; ++i)
    burst += "data: {\"Email\":1,\"Mailbox\":2}\r\n";
  feed.give(burst);
  loop.runUntilIdle();
  EXPECT_EQ(calls("Email/changes"), 1);
  EXPECT_EQ(calls("Mailbox/get"), 1);

  methods.clear();
  onRequest = [&](const platform::HttpRequest& request)
      -> std::optional<platform::HttpResult<platform::HttpResponse>> {
    if (request.body.contains("Email/changes") && methods.empty())
      feed.give(burst);
    return std::nullopt;
  };
  feed.give("data: \"Email\"\n");
  loop.runUntilIdle();
  EXPECT_EQ(calls("Email/changes"), 2) << "events during a check lead to one more";
}

TEST_F(EventStreamTest, NewMailIsNotifiedOnce) {
  connect();
  answers["Email/changes"] = R"({"newState":"s2","created":["e1","e2"]})";
  answers["Email/get g0"] = R"({"list":[
      {"id":"e1","subject":"Hello","from":[{"name":"Ann","email":"a@x"}],"mailboxIds":{"in":true}},
      {"id":"e2","subject":"Filed","from":[],"mailboxIds":{"archive":true}}]})";
  http.feeds[0]->give("data: \"Email\"\n");
  loop.runUntilIdle();
  ASSERT_EQ(center.requests.size(), 1U);
  EXPECT_EQ(log.count("info network: SSE: Email change event received"), 1);
  EXPECT_EQ(center.requests[0].content.title, "Ann");
  EXPECT_EQ(log.count("info network: checkAndNotifyNewEmails: 2 new email(s) since s1"), 1);

  answers["Email/changes"] = R"({"newState":"s3","created":[]})";
  http.feeds[0]->give("data: \"Email\"\n");
  loop.runUntilIdle();
  EXPECT_EQ(center.requests.size(), 1U);
  EXPECT_EQ(log.count("info network: checkAndNotifyNewEmails: no new emails since s2"), 1);

  auto& content = center.requests[0].content;
  EXPECT_EQ(content.userInfo, (std::map<std::string, std::string>{
                                  {"emailId", "e1"}, {"inboxName", "Inbox"}, {"accountParam", "123"}}));
  center.respond(0, std::string(platform::NotificationResponse::defaultAction));
  loop.runUntilIdle();
  EXPECT_EQ(opened, std::vector<std::string>{"https://app.example.com/mail/Inbox/e1?u=123"});

  answers["Mailbox/get t0"] = R"({"list":[{"id":"bin","role":"trash"}]})";
  answers["Email/set"] = "{}";
  methods.clear();
  center.respond(0, "DELETE_EMAIL");
  loop.runUntilIdle();
  EXPECT_EQ(methods, (std::vector<std::string>{"Mailbox/get", "Email/set", "Mailbox/get"}))
      << "the trash, the change, the badge";
}

TEST_F(EventStreamTest, AFailedCheckGoesOnFromThePresent) {
  struct Case {
    std::string changes;
    std::string logged;
  };
  const Case cases[] = {
      {R"({"newState":"s2"})", "fetchEmailChanges: missing newState or created in Email/changes response"},
      {R"({"newState":5,"created":[]})",
       "fetchEmailChanges: missing newState or created in Email/changes response"},
      {R"({"newState":"s2","created":["e1",5]})",
       "fetchEmailChanges: missing newState or created in Email/changes response"},
      {R"({"newState":"s2","created":["e1"]})", "JMAP request attempt 5/5 failed: out of order"},
  };
  connect();
  for (const auto& [changes, logged] : cases) {
    answers["Email/changes"] = changes;
    answers["Email/get"] = R"({"state":"s9"})";
    onRequest = [](const platform::HttpRequest& request)
        -> std::optional<platform::HttpResult<platform::HttpResponse>> {
      if (request.body.contains("\"g0\""))
        return std::unexpected(FakeHttpClient::failure("out of order"));
      return std::nullopt;
    };
    support::LogCapture::lines().clear();
    http.feeds[0]->give("data: \"Email\"\n");
    loop.advance(5s);
    EXPECT_EQ(log.count("error network: " + logged), 1) << changes << testing::PrintToString(log.lines());
    EXPECT_EQ(log.count("error network: checkAndNotifyNewEmails: re-seeded lastEmailState after error — any "
                        "emails in this window were not notified for"),
              1);
    EXPECT_TRUE(center.requests.empty());
  }
  onRequest = nullptr;
  answers["Email/changes"] = R"({"newState":"s10","created":[]})";
  http.feeds[0]->give("data: \"Email\"\n");
  loop.runUntilIdle();
  EXPECT_EQ(log.count("info network: checkAndNotifyNewEmails: no new emails since s9"), 1);

  // Where the present can't be told either, the next check seeds and notifies of nothing.
  answers["Email/changes"] = "[]";
  answers["Email/get"] = R"({"state":null})";
  http.feeds[0]->give("data: \"Email\"\n");
  loop.runUntilIdle();
  EXPECT_EQ(log.count("error network: fetchCurrentEmailState: unexpected JMAP response format"), 1);
  methods.clear();
  http.feeds[0]->give("data: \"Email\"\n");
  loop.runUntilIdle();
  EXPECT_EQ(methods, std::vector<std::string>{"Email/get"});
  EXPECT_EQ(log.count("error network: checkAndNotifyNewEmails: no lastEmailState — seeding instead of "
                      "checking"),
            1);
  EXPECT_EQ(log.count("error network: seedEmailState: failed to fetch initial email state"), 1);
}

TEST_F(EventStreamTest, EveryEndOfTheStreamIsFollowedByThePause) {
  connect();
  const auto reconnectsAfterPause = [this](const std::string& logged) {
    loop.runUntilIdle();
    EXPECT_EQ(log.count("error network: " + logged), 1) << testing::PrintToString(log.lines());
    const auto opened = http.opened.size();
    loop.advance(30s - 1ms);
    EXPECT_EQ(http.opened.size(), opened) << logged;
    loop.advance(1ms);
    EXPECT_EQ(http.opened.size(), opened + 1) << logged;
    support::LogCapture::lines().clear();
  };
  http.feeds.back()->end();
  loop.runUntilIdle();
  EXPECT_EQ(log.count("error network: SSE connection closed — no more lines from server"), 1);
  reconnectsAfterPause("SSE stream ended without error — reconnecting in 30s");
  http.feeds.back()->give(std::unexpected(FakeHttpClient::failure("reset")));
  reconnectsAfterPause("Failed to fetch SSE: reset");
  http.openFailure = FakeHttpClient::failure("refused");
  http.feeds.back()->end();
  loop.advance(30s);
  reconnectsAfterPause("Failed to fetch SSE: refused");
  EXPECT_TRUE(methods.empty()) << "no seeding and no badge: the stream itself tells what changed";
  http.openFailure.reset();
  loop.advance(30s);
  http.feeds.back()->give("data: \"Email\"");
  http.feeds.back()->end();
  loop.runUntilIdle();
  EXPECT_EQ(calls("Email/changes"), 1) << "a line that the end of the stream ends";
}

TEST_F(EventStreamTest, ASilentStreamIsGivenUp) {
  connect();
  loop.advance(50s);
  http.feeds[0]->give(": ping\n");
  loop.advance(90s); // 140 s after the opening: the checks come every 20 s, and 90 s is not longer than 90
  EXPECT_FALSE(http.feeds[0]->gone);
  http.feeds[0]->give("an endless line");
  loop.advance(20s - 1ms);
  EXPECT_FALSE(http.feeds[0]->gone);
  loop.advance(1ms);
  EXPECT_TRUE(http.feeds[0]->gone) << "a line without its end is none";
  EXPECT_EQ(log.count("error network: SSE connection stale — no data in 90s, forcing reconnect"), 1);
  EXPECT_EQ(log.count("error network: Failed to fetch SSE: SSE connection went stale."), 1);
  loop.advance(31s);
  EXPECT_EQ(http.feeds.size(), 2U);
}

TEST_F(EventStreamTest, WakingUpReconnectsAtOnce) {
  connect();
  sleepMonitor.didWake.emit();
  loop.runUntilIdle();
  EXPECT_TRUE(http.feeds[0]->gone);
  EXPECT_EQ(http.feeds.size(), 2U);
  EXPECT_EQ(methods, std::vector<std::string>{"Mailbox/get"}) << "no seeding: the mail of the night is new";
  http.feeds[1]->end();
  loop.advance(5s);
  sleepMonitor.didWake.emit();
  loop.runUntilIdle();
  EXPECT_EQ(http.feeds.size(), 3U) << "also during the pause";
  EXPECT_EQ(log.count("info network: System woke from sleep — forcing SSE reconnect"), 2);
}

TEST_F(EventStreamTest, TheBadgeIsRefreshedWithoutAStreamToo) {
  connect();
  http.openFailure = FakeHttpClient::failure("refused");
  http.feeds[0]->end();
  loop.advance(300s - 1ms);
  EXPECT_EQ(calls("Mailbox/get"), 0);
  loop.advance(1ms);
  EXPECT_EQ(calls("Mailbox/get"), 1);
  answers["Mailbox/get"] = R"({"list":[{"id":"in","role":"inbox","unreadEmails":0}]})";
  loop.advance(300s);
  EXPECT_EQ(dockTile.labels.back(), std::nullopt);
  EXPECT_EQ(settings.unreadCount.get(), 0);
}

TEST_F(EventStreamTest, AnotherFinishedLoadMovesTheRefreshOfTheBadge) {
  connect();
  loop.advance(100s);
  finishLoad();
  methods.clear();
  loop.advance(300s - 1ms);
  EXPECT_EQ(calls("Mailbox/get"), 0) << "the first loop is over";
  loop.advance(1ms);
  EXPECT_EQ(calls("Mailbox/get"), 1);
}

TEST_F(EventStreamTest, LeavingAnAccountIsNoFailure) {
  const auto rejectSeeding = [](const platform::HttpRequest& request)
      -> std::optional<platform::HttpResult<platform::HttpResponse>> {
    if (request.body.contains("\"s0\""))
      return platform::HttpResponse{500, {}, "x"};
    return std::nullopt;
  };
  const std::pair<const char*, std::function<void()>> moments[] = {
      {"the stream is open", [] {}},
      {"in the pause",
       [this] {
         http.feeds.back()->end();
         loop.advance(5s);
       }},
      {"the seeding waits for its next attempt", [&] {
         onRequest = rejectSeeding;
         page->delegate->didFinish();
         loop.advance(100ms);
       }}};
  for (const auto& [name, arrive] : moments) {
    onRequest = nullptr;
    finishLoad();
    arrive();
    support::LogCapture::lines().clear();
    settings.fastmailEnvironmentDidChange.emit();
    loop.advance(1s);
    EXPECT_EQ(log.lines(), std::vector<std::string>()) << name;
  }
  onRequest = [&](const platform::HttpRequest& request) {
    if (request.body.contains("\"s0\""))
      settings.fastmailEnvironmentDidChange.emit();
    return rejectSeeding(request);
  };
  support::LogCapture::lines().clear();
  finishLoad();
  EXPECT_FALSE(log.anyStartsWith("error network: JMAP request attempt"))
      << testing::PrintToString(log.lines());

  // What was known of the account that was left is not gone on from.
  onRequest = rejectSeeding;
  finishLoad();
  sleepMonitor.didWake.emit();
  loop.runUntilIdle();
  onRequest = nullptr;
  methods.clear();
  http.feeds.back()->give("data: \"Email\"\n");
  loop.runUntilIdle();
  EXPECT_EQ(methods, std::vector<std::string>{"Email/get"}) << "seeds";
}

TEST_F(EventStreamTest, AnAddressThatIsNoneIsTold) {
  for (const auto* address : {"", "{types}", "ftp://x/", "https://a b/"}) {
    auto broken = json::parse(sessionText).as_object();
    broken["eventSourceUrl"] = address;
    onRequest = [&](const platform::HttpRequest& request)
        -> std::optional<platform::HttpResult<platform::HttpResponse>> {
      if (request.method == "GET")
        return FakeHttpClient::ok(json::serialize(broken));
      return std::nullopt;
    };
    settings.fastmailEnvironmentDidChange.emit();
    support::LogCapture::lines().clear();
    finishLoad();
    if (address != std::string_view("{types}")) // that one is relative
      EXPECT_EQ(log.count("error network: runEventSource: no eventSourceUrl in JMAP session"), 1) << address;
  }
}

} // namespace
} // namespace ondrel::jmap
