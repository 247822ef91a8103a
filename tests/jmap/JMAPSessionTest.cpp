#include "JMAPSessionFixture.h"

#include <boost/json/serialize.hpp>

namespace ondrel::jmap {
namespace {

using namespace std::chrono_literals;
namespace json = boost::json;
using platform::WebError;
using support::FakeHttpClient;

TEST_F(JMAPSessionTest, WaitersShareALoadAndAreAnsweredByIt) {
  EXPECT_EQ(page->loads, std::vector<std::string>{"https://app.example.com/"});
  std::optional<Result<std::string>> first;
  std::optional<Result<std::string>> second;
  async::Scope scope;
  scope.spawn(store(session->currentAccessToken(), first));
  scope.spawn(store(session->currentAccessToken(), second));
  loop.runUntilIdle();
  EXPECT_EQ(page->loads.size(), 2U) << "one more, for both";
  page->delegate->didFailProvisional({std::string(WebError::urlDomain), WebError::cancelled, "replaced"});
  loop.runUntilIdle();
  EXPECT_FALSE(first) << "the end of the first load is not that of the second";
  finishLoad();
  EXPECT_EQ(first, Result<std::string>("secret-token"));
  EXPECT_EQ(second, first);
}

TEST_F(JMAPSessionTest, AFailedLoadFailsItsWaitersAndIsTriedAgain) {
  const WebError refused{std::string(WebError::urlDomain), WebError::cannotConnectToHost, "refused"};
  std::optional<Result<std::string>> answer;
  async::Scope scope;
  for (const bool provisional : {true, false}) {
    scope.spawn(store(session->currentAccessToken(), answer));
    loop.runUntilIdle();
    if (provisional)
      page->delegate->didFailProvisional(refused);
    else
      page->delegate->didFail(refused);
    loop.runUntilIdle();
    ASSERT_TRUE(answer && !*answer);
    EXPECT_EQ(answer->error().description(), "Navigation failed: refused");
    answer.reset();
  }
  EXPECT_EQ(page->loads.size(), 3U);
  loop.advance(30s);
  EXPECT_EQ(page->loads.size(), 4U) << "also when nobody asks, or nothing would ever begin without network";
  loop.advance(1h);
  EXPECT_GT(page->loads.size(), 5U) << "a load that never ends is one that failed";
}

TEST_F(JMAPSessionTest, WithoutATokenThePageIsLoadedOnceMore) {
  token = nullptr;
  page->delegate->didFinish();
  std::optional<Result<std::string>> answer;
  async::Scope scope;
  scope.spawn(store(session->currentAccessToken(), answer));
  page->evaluations.clear();
  const auto start = loop.now();
  ASSERT_TRUE(loop.runUntil([this] { return page->loads.size() == 2; }, 1h));
  EXPECT_EQ(loop.now() - start, 10s);
  EXPECT_EQ(page->evaluations[0], "globalThis.FastMail?.auth?.accessToken ?? null");
  finishLoad();
  ASSERT_TRUE(loop.runUntil([&] { return answer.has_value(); }, 1h));
  EXPECT_EQ(loop.now() - start, 15s);
  EXPECT_EQ(answer->error().description(), "Fastmail is not signed in.");
}

TEST_F(JMAPSessionTest, APageWithoutAUserIsNotLoadedAgainAndAgain) {
  token = nullptr;
  finishLoad();
  for (std::size_t answered = page->loads.size(); loop.now() < async::TimePoint(10min);) {
    loop.advance(1s);
    if (page->loads.size() != std::exchange(answered, page->loads.size()))
      page->delegate->didFinish();
  }
  EXPECT_GE(page->loads.size(), 10U) << "the user may sign in at any time";
  EXPECT_LE(page->loads.size(), 21U);
}

TEST_F(JMAPSessionTest, ACountOfTheFormerAccountIsNotShown) {
  connect();
  onRequest = [&](const platform::HttpRequest& request)
      -> std::optional<platform::HttpResult<platform::HttpResponse>> {
    if (request.body.contains("Mailbox/get"))
      settings.fastmailEnvironmentDidChange.emit();
    return std::nullopt;
  };
  http.feeds[0]->give("data: \"Mailbox\"\n");
  loop.runUntilIdle();
  EXPECT_EQ(settings.unreadCount.get(), 0);
  EXPECT_EQ(dockTile.labels.back(), std::nullopt);
}

TEST_F(JMAPSessionTest, TakesOnlyATextAsToken) {
  page->delegate->didFinish();
  json::value values[] = {nullptr, "", 5, json::array{"x"}, "late"};
  std::size_t asked = 0;
  page->answer = [&](const std::string&) -> platform::ScriptResult {
    if (asked == 4 && values[4] == "late")
      values[4] = "token";
    else if (asked == 4)
      return values[4];
    if (asked == 2)
      return ++asked, std::unexpected(platform::ScriptError{platform::ScriptError::Kind::exception, "x"});
    return values[asked < 4 ? asked++ : asked];
  };
  const auto answer = run(session->currentAccessToken(), 1h);
  EXPECT_EQ(answer, Result<std::string>("token"));
}

TEST_F(JMAPSessionTest, ARequestCarriesTheTokenAndTheCookiesOfItsHost) {
  struct Case {
    std::string domain;
    bool matches;
  };
  const Case cases[] = {{"api.example.com", true},
                        {".example.com", true},
                        {".api.example.com", true},
                        {"example.com", false},
                        {".xample.com", false},
                        {"API.example.com", false},
                        {"x.api.example.com", false},
                        {".com", true},
                        {"", false},
                        {".x.api.example.com", false},
                        {"badapi.example.com", false}};
  int number = 0;
  std::string expected;
  for (const auto& [domain, matches] : cases) {
    const auto name = "c" + std::to_string(number++);
    cookies.cookies.push_back({name, "v", domain, "/"});
    if (matches)
      expected += (expected.empty() ? "" : "; ") + name + "=v";
  }
  finishLoad();
  const auto& request = http.requests.at(0);
  EXPECT_EQ(request.url, "https://api.example.com/jmap/session");
  EXPECT_EQ(request.method, "GET");
  EXPECT_EQ(platform::headerValue(request.headers, "Authorization"), "Bearer secret-token");
  EXPECT_EQ(platform::headerValue(request.headers, "Cookie"), expected);
  EXPECT_EQ(request.timeout, 60s);

  cookies.cookies = {{"c", "v", "elsewhere.example", "/"}, {"d", "a\tb", "api.example.com", "/"}};
  run(session->mail().inboxUnreadCount());
  const auto& post = http.requests.back();
  EXPECT_EQ(post.url, "https://api.example.com/jmap/api/");
  EXPECT_EQ(post.method, "POST");
  EXPECT_EQ(platform::headerValue(post.headers, "Content-Type"), "application/json");
  EXPECT_EQ(platform::headerValue(post.headers, "Cookie"), std::nullopt);
  EXPECT_EQ(json::parse(post.body).at("using"),
            (json::array{"urn:ietf:params:jmap:core", "urn:ietf:params:jmap:mail"}));
}

TEST_F(JMAPSessionTest, RejectedRepliesAreTriedFiveTimesWithFreshTokens) {
  struct Case {
    platform::HttpResult<platform::HttpResponse> reply;
    std::string logged; // of the reply; empty for none
    std::string error;
  };
  const std::string shape = "Unexpected JMAP response format.";
  const auto rejected = [](int status, const std::string& body) {
    return "JMAP request rejected — status: " + std::to_string(status) + ", body: " + body;
  };
  const std::string methodError = R"({"methodResponses":[["a",{},"0"],["error",{"type":"x"},"q0"]]})";
  const std::string cut = std::string(3999, 'x') + "\xC3\xA9";
  const Case cases[] = {
      {FakeHttpClient::ok(""), rejected(200, ""), shape},
      {FakeHttpClient::ok(methodError), rejected(200, methodError), shape},
      {platform::HttpResponse{401, {}, "no"}, rejected(401, "no"), shape},
      {platform::HttpResponse{302, {}, "x"}, rejected(302, "x"), shape},
      {platform::HttpResponse{500, {}, std::string(5000, 'x')}, rejected(500, std::string(4000, 'x')), shape},
      {platform::HttpResponse{500, {}, cut + "tail"}, rejected(500, "<4005 non-UTF8 bytes>"), shape},
      {std::unexpected(FakeHttpClient::failure("reset by peer")), "", "reset by peer"},
      // What a server repeats of the request must not reach the log.
      {platform::HttpResponse{403, {}, "you sent TOKEN and sid=42, sid-value-abc"},
       rejected(403, "you sent <private> and <private>, <private>"), shape},
      {platform::HttpResponse{403, {}, std::string(3995, 'x') + "TOKEN more"},
       rejected(403, std::string(3995, 'x') + "<priv"), shape},
  };
  cookies.cookies = {{"sid", "42", "api.example.com", "/"}, {"id", "sid-value-abc", ".example.com", "/"}};
  connect();
  for (const auto& [reply, logged, error] : cases) {
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
    EXPECT_EQ(loop.now() - start, 3200ms);
    ASSERT_EQ(http.requests.size(), 5U);
    EXPECT_EQ(platform::headerValue(http.requests[0].headers, "Authorization"), "Bearer secret-token1");
    for (std::size_t i = 1; i < 5; ++i)
      EXPECT_EQ(platform::headerValue(http.requests[i].headers, "Authorization"), "Bearer secret-token2");
    if (!logged.empty())
      EXPECT_GE(log.count("error network: " + logged), 4) << testing::PrintToString(log.lines());
    EXPECT_EQ(log.count("error network: JMAP request attempt 5/5 failed: " + error), 1);
    for (const auto& line : log.lines())
      EXPECT_FALSE(line.contains("secret-token") || line.contains("sid-value")) << line;
  }
}

TEST_F(JMAPSessionTest, WhatAnAcceptedReplyRepeatsStaysOutOfTheLogToo) {
  connect();
  answers["Email/set"] = R"({"notUpdated":{"M1":{"description":"you sent secret-token"}}})";
  async::Scope scope;
  scope.spawn(session->mail().setMailboxMembership({"M1"}, "B1", true));
  loop.runUntilIdle();
  EXPECT_EQ(log.lines(), std::vector<std::string>{
                             R"(error network: setMailboxMembership: 1 email(s) failed to add mailbox B1: )"
                             R"({"M1":{"description":"you sent <private>"}})"});
}

TEST_F(JMAPSessionTest, AReplyOfNothingButCommasIsRefusedUnread) {
  connect();
  std::string body = "[0";
  for (int i = 0; i < 4'000'001; ++i)
    body += ",0";
  onRequest = [&](const platform::HttpRequest&) { return std::optional(FakeHttpClient::ok(body + "]")); };
  const auto result = run(session->mail().inboxUnreadCount());
  ASSERT_TRUE(result && !*result);
  EXPECT_EQ(result->error().kind, JMAPError::Kind::malformed);
}

TEST_F(JMAPSessionTest, WhatIsNoErrorReplyIsAccepted) {
  connect();
  for (const auto* body : {R"({"methodResponses":[["error"],5]})", R"({"methodResponses":{"error":1}})",
                           R"([["error",{},"0"]])", "not JSON", R"({"methodResponses":[[],["Error",{}]]})"}) {
    onRequest = [&](const platform::HttpRequest&) { return std::optional(FakeHttpClient::ok(body)); };
    http.requests.clear();
    EXPECT_TRUE(run(session->mail().inboxUnreadCount())) << body << " needs no second attempt";
    EXPECT_EQ(http.requests.size(), 1U) << body;
  }
}

TEST_F(JMAPSessionTest, TheSessionResourceIsKeptUntilTheEnvironmentChanges) {
  connect();
  run(session->fetchSessionData());
  EXPECT_TRUE(http.requests.empty());
  settings.unreadCount.set(7);
  session->mail().mailboxes().inboxId = "in";

  settings.setEnvironment(settings::FastmailEnvironment::beta);
  settings.fastmailEnvironmentDidChange.emit();
  loop.runUntilIdle();
  EXPECT_EQ(page->loads.back(), "https://beta.example.com/");
  EXPECT_EQ(settings.unreadCount.get(), 0);
  EXPECT_EQ(dockTile.labels.back(), std::nullopt);
  EXPECT_EQ(session->mail().mailboxes(), MailboxCache());
  EXPECT_TRUE(http.feeds[0]->gone);
  loop.advance(1h);
  EXPECT_TRUE(http.requests.empty()) << "nothing goes on before the new page is there";
  EXPECT_EQ(http.feeds.size(), 1U);

  finishLoad();
  EXPECT_EQ(http.requests.at(0).url, "https://betaapi.example.com/jmap/session");
  EXPECT_EQ(http.feeds.size(), 2U);
  EXPECT_TRUE(log.anyStartsWith("info network: seedEmailState: seeded state s1"));
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
    onRequest = [&](const platform::HttpRequest& request)
        -> std::optional<platform::HttpResult<platform::HttpResponse>> {
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
  const auto good = json::parse(sessionText).as_object();
  const auto from = "https://api.example.com/jmap/session";
  const std::pair<std::string, json::value> broken[] = {{"apiUrl", nullptr},
                                                        {"apiUrl", 5},
                                                        {"apiUrl", "https://a b/"},
                                                        {"eventSourceUrl", {}},
                                                        {"apiUrl", ""},
                                                        {"downloadUrl", 5},
                                                        {"downloadUrl", true},
                                                        {"primaryAccounts", json::array()},
                                                        {"primaryAccounts", 1},
                                                        {"primaryAccounts", {{"a", 5}}}};
  for (const auto& [key, value] : broken) {
    auto changed = good;
    changed[key] = value;
    EXPECT_FALSE(JMAPSessionData::decode(json::serialize(changed), from)) << key << value;
    changed.erase(key);
    EXPECT_FALSE(JMAPSessionData::decode(json::serialize(changed), from)) << key;
  }
  for (const auto* text : {"", "<html>", "[]", "null", "{\"apiUrl\":"})
    EXPECT_EQ(JMAPSessionData::decode(text, from).error().kind, JMAPError::Kind::malformed) << text;

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
    const auto data = JMAPSessionData::decode(json::serialize(changed), from);
    ASSERT_TRUE(data) << given;
    EXPECT_EQ(data->apiUrl, expected);
    EXPECT_EQ(data->eventSourceUrl, expected + "?t={types}");
  }
  for (const auto& [id, parameter] : {std::pair{"u123", "123"}, {"x1", "x1"}, {"", ""}, {"uu1", "u1"}})
    EXPECT_EQ(accountParameter(id), parameter);
}

} // namespace
} // namespace ondrel::jmap
