#include "JMAPSessionFixture.h"

#include <boost/json/serialize.hpp>

#include <algorithm>

namespace ondrel::jmap {
namespace {

using namespace std::chrono_literals;
namespace json = boost::json;
using support::FakeHttpClient;

TEST_F(JMAPSessionTest, ARequestCarriesTheTokenAndTheCookiesOfItsHost) {
  for (const auto* domain : {"api.example.com", ".example.com", ".api.example.com", ".com"})
    cookies.cookies.push_back({"c", domain, domain, "/"});
  for (const auto* domain : {"example.com", ".xample.com", "API.example.com", "x.api.example.com", "",
                             ".x.api.example.com", "badapi.example.com"})
    cookies.cookies.push_back({"c", "elsewhere", domain, "/"});
  finishLoad();
  const auto& request = http.requests.at(0);
  EXPECT_EQ(request.url, "https://api.example.com/jmap/session");
  EXPECT_EQ(request.method, "GET");
  EXPECT_EQ(platform::headerValue(request.headers, "Authorization"), "Bearer secret-token");
  EXPECT_EQ(platform::headerValue(request.headers, "Cookie"),
            "c=api.example.com; c=.example.com; c=.api.example.com; c=.com");

  cookies.cookies = {{"c", "v", "elsewhere.example", "/"}, {"d", "a\tb", "api.example.com", "/"}};
  run(session->mail().inboxUnreadCount());
  const auto& post = http.requests.back();
  EXPECT_EQ(post.url, "https://api.example.com/jmap/api/");
  EXPECT_EQ(platform::headerValue(post.headers, "Cookie"), std::nullopt);
}

TEST_F(JMAPSessionTest, RejectedRepliesAreTriedFiveTimesWithFreshTokens) {
  const std::string shape = "Unexpected JMAP response format.";
  const auto rejected = [](int status, const std::string& body) {
    return "JMAP request rejected — status: " + std::to_string(status) + ", body: " + body;
  };
  const std::string methodError = R"({"methodResponses":[["a",{},"0"],["error",{"type":"x"},"q0"]]})";
  const std::string unavailable = R"({"methodResponses":[["error",{"type":"serverUnavailable"},"q0"]]})";
  const std::string cut = std::string(3999, 'x') + "\xC3\xA9";
  const struct {
    Response reply;
    std::string logged; // of the reply; empty for none
    std::string error;
    bool isPassing = true;
  } cases[] = {
      {FakeHttpClient::ok(""), rejected(200, ""), shape},
      {FakeHttpClient::ok(methodError), rejected(200, methodError), shape, false},
      {FakeHttpClient::ok(unavailable), rejected(200, unavailable), shape},
      {platform::HttpResponse{302, {}, std::string(5000, 'x')}, rejected(302, std::string(4000, 'x')), shape},
      {platform::HttpResponse{500, {}, cut + "tail"}, rejected(500, "<4005 non-UTF8 bytes>"), shape},
      {std::unexpected(FakeHttpClient::failure("reset by peer")), "", "reset by peer"},
      // What a server repeats of the request must not reach the log.
      {platform::HttpResponse{403, {}, "you sent TOKEN and sid=42, sid-value-abc"},
       rejected(403, "you sent <private> and <private>, <private>"), shape},
  };
  cookies.cookies = {{"sid", "42", "api.example.com", "/"}, {"id", "sid-value-abc", ".example.com", "/"}};
  connect();
  for (const auto& [reply, logged, error, isPassing] : cases) {
    token = "secret-token1";
    onRequest = [&](const platform::HttpRequest& request) {
      auto answer = reply;
      const auto at = answer ? answer->body.find("TOKEN") : std::string::npos;
      if (at != std::string::npos)
        answer->body.replace(at, 5, platform::headerValue(request.headers, "Authorization")->substr(7));
      token = "secret-token2";
      return std::optional(answer);
    };
    http.requests.clear();
    support::LogCapture::lines().clear();
    const auto start = loop.now();
    const auto result = run(session->mail().inboxUnreadCount(), 1min);
    ASSERT_TRUE(result && !*result);
    EXPECT_EQ(result->error().description(), error);
    EXPECT_EQ(result->error().isPassing(), isPassing) << logged;
    EXPECT_EQ(loop.now() - start, 3200ms);
    Lines tokens;
    for (const auto& request : http.requests)
      tokens.push_back(*platform::headerValue(request.headers, "Authorization"));
    Lines expectedTokens(5, "Bearer secret-token2");
    expectedTokens[0] = "Bearer secret-token1";
    EXPECT_EQ(tokens, expectedTokens);
    if (!logged.empty())
      EXPECT_GE(log.count("error network: " + logged), 4) << testing::PrintToString(log.lines());
    EXPECT_EQ(log.count("error network: JMAP request attempt 5/5 failed: " + error), 1);
    for (const auto& line : log.lines())
      EXPECT_FALSE(line.contains("secret-token") || line.contains("sid-value")) << line;
  }
}

TEST_F(JMAPSessionTest, WhatAnAcceptedReplyRepeatsStaysOutOfTheLogToo) {
  connect();
  answers["Email/set"] =
      support::FakeJMAPClient::reply({R"({"notUpdated":{"M1":{"description":"you sent secret-token"}}})"});
  async::Scope scope;
  scope.spawn(session->mail().setMailboxMembership({"M1"}, "B1", true));
  loop.runUntilIdle();
  EXPECT_EQ(log.lines(), Lines{R"(error network: setMailboxMembership: 1 email(s) failed to add mailbox B1: )"
                               R"({"M1":{"description":"you sent <private>"}})"});
}

TEST_F(JMAPSessionTest, WhatIsNoErrorReplyIsTakenAtOnceAndReadWithinLimits) {
  std::string commas = "[0";
  for (int i = 0; i < 4'000'001; ++i)
    commas += ",0";
  connect();
  for (const auto& body : {std::string(R"({"methodResponses":[["error"],5]})"),
                           std::string(R"({"methodResponses":{"error":1}})"), std::string("not JSON"),
                           std::string(R"([["error",{},"0"]])"), commas + "]"}) {
    onRequest = [&](const platform::HttpRequest&) { return std::optional(FakeHttpClient::ok(body)); };
    http.requests.clear();
    const auto result = run(session->mail().inboxUnreadCount());
    EXPECT_EQ(http.requests.size(), 1U) << body.substr(0, 100);
    const bool unread = body.front() == 'n' || body.size() > 1000;
    const auto expected = unread ? JMAPError::Kind::malformed : JMAPError::Kind::badResponse;
    EXPECT_EQ(result.value().error().kind, expected) << body.substr(0, 100);
  }
}

TEST_F(JMAPSessionTest, NothingOfAnEnvironmentOutlivesIt) {
  connect();
  run(session->fetchSessionData());
  EXPECT_TRUE(http.requests.empty()) << "the session resource is kept";
  session->mail().mailboxes().inboxId = "in";
  // The change comes while the unread are being counted.
  atRequest("Mailbox/get", [this] {
    settings.setEnvironment(settings::FastmailEnvironment::beta);
    settings.fastmailEnvironmentDidChange.emit();
  });
  give("data: \"Mailbox\"\n");
  onRequest = nullptr;
  http.requests.clear();
  EXPECT_EQ(std::ranges::count(page->loads, "https://beta.example.com/"), 1);
  EXPECT_EQ(settings.unreadCount.get(), 0);
  EXPECT_EQ(launcherBadge.labels.back(), std::nullopt);
  EXPECT_EQ(session->mail().mailboxes(), MailboxCache());
  EXPECT_TRUE(http.feeds[0]->gone);
  loop.advance(1h);
  EXPECT_TRUE(http.requests.empty()) << "nothing goes on before the new page is there";
  EXPECT_EQ(http.feeds.size(), 1U);

  finishLoad();
  EXPECT_EQ(http.requests.at(0).url, "https://betaapi.example.com/jmap/session");
}

TEST_F(JMAPSessionTest, ASessionIsKeptForItsOwnEnvironmentOnly) {
  using settings::FastmailEnvironment;
  const auto changeTo = [this](FastmailEnvironment environment) {
    settings.setEnvironment(environment);
    settings.fastmailEnvironmentDidChange.emit();
  };
  // Changes while requests are on their way: to another one, there and back, to one of the same address.
  const std::vector<FastmailEnvironment> cases[] = {
      {FastmailEnvironment::beta},
      {FastmailEnvironment::beta, FastmailEnvironment::production},
      {FastmailEnvironment::production}};
  for (const auto& changes : cases) {
    changeTo(FastmailEnvironment::production);
    page->delegate->didFinish();
    int served = 0;
    onRequest = [&](const platform::HttpRequest& request) -> std::optional<Response> {
      if (request.method != "GET")
        return std::nullopt;
      auto resource = json::parse(sessionText).as_object();
      resource["apiUrl"] = "https://api.example.com/" + std::to_string(++served);
      if (served == 1)
        std::ranges::for_each(changes, changeTo);
      return FakeHttpClient::ok(json::serialize(resource));
    };
    const auto first = run(session->fetchSessionData(), 1s);
    ASSERT_TRUE(first && *first);
    loop.advance(1s);
    const int servedToTheFormer = served;
    page->delegate->didFinish();
    const auto kept = run(session->fetchSessionData(), 1s);
    ASSERT_TRUE(kept && *kept);
    EXPECT_GT(std::stoi((*kept)->apiUrl.substr(24)), servedToTheFormer) << changes.size();
  }
}

TEST(JMAPSessionData, IsDecodedStrictlyAndResolved) {
  const auto decode = [](std::string text, const char* from) {
    return JMAPSessionData::decode(JMAPReply::of(std::move(text)).json, from);
  };
  const auto good = json::parse(sessionText).as_object();
  const auto from = "https://api.example.com/jmap/session";
  const std::pair<std::string, json::value> broken[] = {
      {"apiUrl", "https://a b/"}, {"apiUrl", ""},         {"eventSourceUrl", {}},
      {"downloadUrl", true},      {"primaryAccounts", 1}, {"primaryAccounts", {{"a", 5}}}};
  for (const auto& [key, value] : broken) {
    auto changed = good;
    changed[key] = value;
    EXPECT_FALSE(decode(json::serialize(changed), from)) << key << value;
    changed.erase(key);
    EXPECT_FALSE(decode(json::serialize(changed), from)) << key;
  }
  const auto huge = std::string(sessionText).insert(1, R"("x":[0)" + std::string(4'000'000, ',') + "0],");
  for (const auto& text : {std::string("<html>"), std::string("[]"), huge})
    EXPECT_EQ(decode(text, from).error().kind, JMAPError::Kind::malformed) << text.substr(0, 100);

  const std::pair<std::string, std::string> addresses[] = {
      {"https://other.example/x", "https://other.example/x"},
      {"/jmap/", "https://api.example.com/jmap/"},
      {"//cdn.example/e", "https://cdn.example/e"},
      {"api/", "https://api.example.com/jmap/api/"},
      {"api/?at=1:2", "https://api.example.com/jmap/api/?at=1:2"}};
  for (const auto& [given, expected] : addresses) {
    auto changed = good;
    changed["apiUrl"] = given;
    changed["eventSourceUrl"] = given + "?t={types}";
    const auto data = decode(json::serialize(changed), from);
    ASSERT_TRUE(data) << given;
    EXPECT_EQ(data->apiUrl, expected);
    EXPECT_EQ(data->eventSourceUrl, expected + "?t={types}");
  }
}

} // namespace
} // namespace ondrel::jmap
