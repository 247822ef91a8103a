#include "JMAPSessionFixture.h"

namespace ondrel::jmap {
namespace {

using namespace std::chrono_literals;
using support::FakeHttpClient;

constexpr auto emailLine = "data: \"Email\"\n";
constexpr auto bothLine = "data: {\"Email\":1,\"Mailbox\":2}\r\n";

using EventStreamTest = JMAPSessionTest;

TEST_F(EventStreamTest, AFinishedLoadStartsStreamAndBadge) {
  finishLoad();
  EXPECT_EQ(methods, (Lines{"Email/get", "Mailbox/get", "Mailbox/get", "Email/changes", "Mailbox/get"}))
      << "seed, whether there is an archive, badge, and what came before the stream was open";
  EXPECT_EQ(settings.unreadCount.get(), 3);
  EXPECT_EQ(launcherBadge.labels.back(), "3");
  ASSERT_EQ(http.opened.size(), 1U);
  const auto& request = http.opened[0];
  EXPECT_EQ(request.url, "https://api.example.com/events/?types=Mailbox,Email&close=no&ping=30");
  EXPECT_EQ(request.headers, (platform::HttpHeaders{{"Authorization", "Bearer secret-token"},
                                                    {"Accept", "text/event-stream"}}));
  finishLoad();
  EXPECT_TRUE(http.feeds[0]->gone) << "each finished load starts anew";
  EXPECT_EQ(http.feeds.size(), 2U);
}

TEST_F(EventStreamTest, LinesOfTheStreamWakeTheWorkersOnceAtATime) {
  connect();
  give(": ping\nevent: \"Email\"\n{\"Email\"}\n");
  EXPECT_TRUE(methods.empty());
  give("data: {\"Mailbox\":1}\n");
  EXPECT_EQ(methods, Lines{"Mailbox/get"});
  methods.clear();
  give(emailLine);
  EXPECT_EQ(methods, (Lines{"Mailbox/get", "Email/changes"})) << "not every server names the mailbox as well";

  std::string many;
  for (int i = 0; i < 1000; ++i)
    many += bothLine;
  bool answered = false;
  atRequest("Email/changes", [&] {
    if (!std::exchange(answered, true))
      http.feeds[0]->give(many);
  });
  methods.clear();
  give(emailLine);
  EXPECT_EQ(calls("Email/changes"), 2) << "events during a check lead to one more";
  EXPECT_EQ(calls("Mailbox/get"), 2);
}

TEST_F(EventStreamTest, LinesWithoutAPauseAreAskedAboutAtTheirEnd) {
  connect();
  http.feeds[0]->more = true;
  for (int i = 0; i < 100; ++i)
    give(bothLine);
  EXPECT_TRUE(methods.empty());
  http.feeds[0]->more = false;
  give(": ping\n");
  EXPECT_EQ(calls("Email/changes"), 1);
  EXPECT_EQ(calls("Mailbox/get"), 1);

  methods.clear();
  http.feeds[0]->more = true;
  for (int i = 0; i < 50; ++i) {
    give(bothLine);
    loop.advance(100ms);
  }
  EXPECT_GE(calls("Email/changes"), 4) << "each second, when they have no end";
  EXPECT_LE(calls("Email/changes"), 5);

  loop.advance(1s);
  methods.clear();
  give(bothLine);
  give(std::unexpected(FakeHttpClient::failure("reset")));
  EXPECT_EQ(calls("Email/changes"), 1) << "and at the end of the connection";
  EXPECT_EQ(calls("Mailbox/get"), 1);
}

TEST_F(EventStreamTest, NewMailIsShownAndOpenedOrDeleted) {
  connect();
  answers["Email/changes"] = support::FakeJMAPClient::reply({R"({"newState":"s2","created":["M1"]})"});
  give(emailLine);
  ASSERT_EQ(center.requests.size(), 1U);
  center.respond(0, std::string(platform::NotificationResponse::defaultAction));
  EXPECT_EQ(opened, Lines{"https://app.example.com/mail/In%20box/M1?u=123"});
  methods.clear();
  center.respond(0, "DELETE_EMAIL");
  loop.runUntilIdle();
  EXPECT_EQ(methods.back(), "Mailbox/get") << "the badge follows";
}

TEST_F(EventStreamTest, EveryEndOfTheStreamIsFollowedByThePause) {
  connect();
  const auto reconnectsAfterPause = [this] {
    loop.runUntilIdle();
    const auto opened = http.opened.size();
    loop.advance(30s - 1ms);
    EXPECT_EQ(http.opened.size(), opened);
    loop.advance(1ms);
    EXPECT_EQ(http.opened.size(), opened + 1);
  };
  http.feeds.back()->end();
  reconnectsAfterPause();
  http.feeds.back()->give(std::unexpected(FakeHttpClient::failure("reset")));
  reconnectsAfterPause();
  http.openFailure = FakeHttpClient::failure("refused");
  http.feeds.back()->end();
  loop.advance(30s);
  reconnectsAfterPause();
  EXPECT_EQ(methods, (Lines{"Mailbox/get", "Email/changes", "Mailbox/get", "Email/changes"}))
      << "at each opening, what the stream has missed, and no seeding";
  http.openFailure.reset();
  loop.advance(30s);
  loop.runUntilIdle();
  methods.clear();
  http.feeds.back()->give("data: \"Email\"");
  http.feeds.back()->end();
  loop.runUntilIdle();
  EXPECT_EQ(calls("Email/changes"), 1) << "a line that the end of the stream ends";

  http.streamStatus = 503;
  methods.clear();
  loop.advance(30s);
  EXPECT_EQ(methods, Lines()) << "what is refused is not open";
}

TEST_F(EventStreamTest, ASecondConnectionGoesOnWhereTheFirstOneEnded) {
  const auto lastEventId = [this] {
    http.feeds.back()->end();
    loop.advance(30s);
    return platform::headerValue(http.opened.back().headers, "Last-Event-ID");
  };
  connect();
  EXPECT_EQ(lastEventId(), std::nullopt);
  give("id: 7\ndata: \"Email\"\n\nid: 8\ndata: \"Email\"\n");
  EXPECT_EQ(lastEventId(), "7") << "the second event was cut off";
  EXPECT_EQ(lastEventId(), "7");
  const auto before = http.opened.size();
  methods.clear();
  sleepMonitor.didWake.emit(); // reconnects at once
  loop.runUntilIdle();
  EXPECT_TRUE(http.feeds[before - 1]->gone);
  EXPECT_EQ(http.opened.size(), before + 1);
  EXPECT_EQ(platform::headerValue(http.opened.back().headers, "Last-Event-ID"), "7");
  EXPECT_EQ(calls("Email/get"), 0) << "no seeding: the mail of the night is new";
  give("id\n\n");
  EXPECT_EQ(lastEventId(), std::nullopt);
  give("id: 9\n\n");
  settings.fastmailEnvironmentDidChange.emit();
  finishLoad();
  EXPECT_EQ(platform::headerValue(http.opened.back().headers, "Last-Event-ID"), std::nullopt);
}

TEST_F(EventStreamTest, AnOutageLosesNoMail) {
  connect();
  onRequest = [](const auto&) { return Response(platform::HttpResponse{502, {}, "x"}); };
  answers["Email/changes"] = support::FakeJMAPClient::reply({R"({"newState":"s2","created":["M1"]})"});
  give(emailLine);
  loop.advance(4s);
  finishLoad(); // for want of a token, say
  onRequest = nullptr;
  EXPECT_EQ(center.requests.size(), 0U);
  loop.advance(30s);
  EXPECT_EQ(center.requests.size(), 1U) << "though no event has come since";

  http.delay = 10min; // longer than a request may take
  give(emailLine);
  loop.advance(60s);
  http.delay = {};
  answers["Email/changes"] = support::FakeJMAPClient::reply({R"({"newState":"s3","created":["M1"]})"});
  loop.advance(30s);
  EXPECT_EQ(center.requests.size(), 2U);
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
  loop.advance(31s);
  EXPECT_EQ(http.feeds.size(), 2U);
}

TEST_F(EventStreamTest, TheBadgeIsRefreshedWithoutAStreamToo) {
  connect();
  loop.advance(100s);
  finishLoad();
  http.openFailure = FakeHttpClient::failure("refused");
  http.feeds[1]->end();
  methods.clear();
  loop.advance(300s - 1ms);
  EXPECT_EQ(calls("Mailbox/get"), 0) << "another finished load moves it";
  loop.advance(1ms);
  EXPECT_EQ(calls("Mailbox/get"), 1);
  onRequest = [](const auto&) { return Response(platform::HttpResponse{500, {}, "x"}); };
  loop.advance(310s);
  EXPECT_EQ(settings.unreadCount.get(), 3) << "an error changes nothing";
  onRequest = nullptr;
  methods.clear();
  loop.advance(30s);
  EXPECT_EQ(calls("Mailbox/get"), 1) << "and is asked again soon";
  answers["Mailbox/get"] =
      support::FakeJMAPClient::reply({R"({"list":[{"role":"inbox","unreadEmails":0}]})"});
  loop.advance(300s);
  EXPECT_EQ(settings.unreadCount.get(), 0);
  EXPECT_EQ(launcherBadge.labels.back(), std::nullopt);
}

TEST_F(EventStreamTest, LeavingAnAccountIsNoFailure) {
  const auto leave = [this] {
    support::LogCapture::lines().clear();
    settings.fastmailEnvironmentDidChange.emit();
    loop.advance(1s);
    EXPECT_EQ(log.lines(), Lines());
  };
  connect();
  leave(); // while the stream is open
  finishLoad();
  http.feeds.back()->end();
  loop.advance(5s);
  leave(); // in the pause

  bool atSeeding = false;
  onRequest = [&](const platform::HttpRequest& request) -> std::optional<Response> {
    if (!request.body.contains("\"s0\""))
      return std::nullopt;
    if (atSeeding)
      settings.fastmailEnvironmentDidChange.emit();
    return platform::HttpResponse{500, {}, "x"};
  };
  page->delegate->didFinish();
  loop.advance(100ms);
  leave(); // while the seeding waits for its next attempt
  atSeeding = true;
  finishLoad();
  EXPECT_FALSE(log.anyStartsWith("error network: JMAP request attempt"));

  // What was known of the account that was left is not gone on from.
  atSeeding = false;
  finishLoad();
  sleepMonitor.didWake.emit();
  loop.runUntilIdle();
  onRequest = nullptr;
  methods.clear();
  give(emailLine);
  loop.advance(1s);
  EXPECT_EQ(methods, (Lines{"Mailbox/get", "Email/get", "Email/changes"})) << "seeds first";
}

} // namespace
} // namespace ondrel::jmap
