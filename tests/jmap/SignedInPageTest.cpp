#include "jmap/protocol/SignedInPage.h"

#include "async/Scope.h"
#include "async/VirtualEventLoop.h"
#include "settings/AppSettings.h"
#include "settings/ServicePage.h"
#include "support/FakeDesktop.h"
#include "support/FakeWebView.h"
#include "support/RunToEnd.h"
#include "support/TestSite.h"

#include <boost/json/array.hpp>
#include <gtest/gtest.h>

namespace ondrel::jmap {
namespace {

using namespace std::chrono_literals;
namespace json = boost::json;
using platform::NavigationPolicy;
using platform::WebError;

const WebError refused{WebError::Domain::network, WebError::cannotConnectToHost, "refused"};
const WebError replaced{WebError::Domain::network, WebError::cancelled, "replaced"};

class SignedInPageTest : public testing::Test {
 protected:
  SignedInPageTest() {
    webViews.onMake = [this](support::FakeWebView& made) { view = &made; };
    page.emplace(webViews, settings, [this] { ++finished; });
    page->load();
  }
  platform::WebViewDelegate& engine() { return *view->delegate; }
  template <class T>
  async::TaskHandle start(async::Task<T> task, std::optional<T>& result) {
    result.reset();
    auto handle = scope.spawn(support::keepResult(std::move(task), &result));
    loop.runUntilIdle();
    return handle;
  }

  async::VirtualEventLoop loop;
  support::FakeDefaults defaults;
  settings::AppSettings settings{defaults, support::testSite()};
  support::FakeWebViewFactory webViews;
  support::FakeWebView* view = nullptr;
  int finished = 0;
  std::optional<SignedInPage> page;
  std::optional<Result<std::optional<std::string>>> polled;
  std::optional<Result<std::string>> token;
  std::optional<Result<void>> loaded;
  async::Scope scope;
};

TEST_F(SignedInPageTest, TakesOnlyATextThatIsNotEmptyAsToken) {
  const std::pair<platform::ScriptResult, std::optional<std::string>> cases[] = {
      {nullptr, std::nullopt},
      {"", std::nullopt},
      {5, std::nullopt},
      {json::array{"x"}, std::nullopt},
      {std::unexpected(platform::ScriptError{platform::ScriptError::Kind::exception, "x"}), std::nullopt},
      {"token", "token"}};
  for (const auto& [answer, expected] : cases) {
    view->answer = [&answer](const std::string&) { return answer; };
    start(page->pollAccessToken(1), polled);
    loop.advance(500ms);
    ASSERT_TRUE(polled && *polled);
    EXPECT_EQ(**polled, expected);
  }
  view->currentUrl = "https://elsewhere.example/";
  start(page->pollAccessToken(1), polled);
  loop.advance(500ms);
  EXPECT_EQ(**polled, std::nullopt);
  EXPECT_EQ(view->evaluations.size(), std::size(cases)) << "what another site calls so is not looked at";
}

TEST_F(SignedInPageTest, ACancelledPollEndsWithoutAnotherQuestion) {
  auto polling = start(page->pollAccessToken(20), polled);
  loop.advance(1200ms);
  polling.cancel();
  loop.advance(1min);
  ASSERT_TRUE(polled && !*polled);
  EXPECT_EQ(polled->error(), JMAPError::cancelled());
  EXPECT_EQ(view->evaluations.size(), 3U);
}

TEST_F(SignedInPageTest, WaitersShareALoadAndAreAnsweredByIt) {
  view->answer = [](const std::string&) { return json::value("token"); };
  std::optional<Result<std::string>> second;
  start(page->currentAccessToken(), token);
  start(page->currentAccessToken(), second);
  EXPECT_EQ(view->loads, std::vector<std::string>(2, "https://app.example.com/")) << "one more, for both";
  engine().didFailProvisional(replaced);
  loop.runUntilIdle();
  EXPECT_FALSE(token) << "the end of the first load is not that of the second";
  engine().didFinish();
  loop.runUntilIdle();
  EXPECT_EQ(token, Result<std::string>("token"));
  EXPECT_EQ(second, token);
}

TEST_F(SignedInPageTest, WithoutATokenThePageIsLoadedOnceMoreButNotAgainAndAgain) {
  engine().didFinish();
  const auto begin = loop.now();
  start(page->currentAccessToken(), token);
  ASSERT_TRUE(loop.runUntil([this] { return view->loads.size() == 2; }, 1h));
  EXPECT_EQ(loop.now() - begin, 10s);
  engine().didFinish();
  ASSERT_TRUE(loop.runUntil([this] { return token.has_value(); }, 1h));
  EXPECT_EQ(loop.now() - begin, 15s);
  EXPECT_EQ(token->error(), JMAPError::notAuthenticated());

  start(page->currentAccessToken(), token);
  loop.advance(10s);
  EXPECT_EQ(token.value().error(), JMAPError::notAuthenticated());
  EXPECT_EQ(view->loads.size(), 2U) << "15 s after the last time";
  loop.advance(5s);
  start(page->currentAccessToken(), token);
  loop.advance(10s);
  EXPECT_EQ(view->loads.size(), 3U) << "the user may sign in at any time";
}

TEST_F(SignedInPageTest, ASignInInAWindowGivesTheTokenAtOnce) {
  bool asksToSignIn = false;
  view->answer = [&](const std::string& script) {
    return script == settings::page::asksToSignIn ? json::value(asksToSignIn) : json::value();
  };
  const auto visiblePageLoads = [&] {
    scope.spawn(page->visiblePageDidLoad());
    loop.runUntilIdle();
    return view->loads.size();
  };
  engine().didFinish();
  start(page->currentAccessToken(), token);
  EXPECT_EQ(visiblePageLoads(), 1U) << "its program is only starting";
  asksToSignIn = true;
  EXPECT_EQ(visiblePageLoads(), 2U);
  view->answer = [](const std::string&) { return json::value("token"); };
  engine().didFinish();
  loop.advance(500ms);
  EXPECT_EQ(token, Result<std::string>("token"));
  EXPECT_EQ(visiblePageLoads(), 2U);
}

TEST_F(SignedInPageTest, TellsSoonThatNobodyIsSignedIn) {
  std::optional<bool> shown;
  bool pageShows = true;
  view->answer = [&](const std::string&) { return json::value(pageShows); };
  const auto ask = [&] {
    start(page->isSignInShown(), shown);
    loop.advance(2s);
    return shown;
  };
  EXPECT_EQ(ask(), false) << "nothing is known of a page that isn't there";
  engine().didFinish();
  EXPECT_EQ(ask(), true);
  EXPECT_EQ(view->loads.size(), 2U) << "somebody may have signed in since, elsewhere";
  EXPECT_EQ(ask(), true) << "as long as that load takes";
  pageShows = false;
  engine().didFinish();
  EXPECT_EQ(ask(), false);
}

TEST_F(SignedInPageTest, APageThatHasFinishedStays) {
  engine().didFailProvisional(refused);
  engine().didFinish(); // of a load that the page began itself
  loop.advance(1h);
  EXPECT_EQ(view->loads.size(), 1U) << "the pause is not still running";
  page->load();
  engine().didFinish();
  loop.advance(1h);
  EXPECT_EQ(view->loads.size(), 2U) << "nor the deadline";
  EXPECT_EQ(finished, 2);
}

TEST_F(SignedInPageTest, APageThatIsLostComesBack) {
  const std::pair<const char*, std::function<void()>> losses[] = {
      {"Navigation failed: refused", [this] { engine().didFail(refused); }},
      {"Navigation failed: refused", [this] { engine().didFailProvisional(refused); }},
      {"Navigation failed: The page's process has ended.", [this] { engine().webProcessDidTerminate(true); }},
      {"Navigation failed: The request timed out.", [this] { loop.advance(2min); }}};
  for (const auto& [reason, lose] : losses) {
    page->forget();
    start(page->waitForPageLoad(), loaded);
    const auto loads = view->loads.size();
    lose();
    loop.runUntilIdle();
    ASSERT_TRUE(loaded && !*loaded) << reason;
    EXPECT_EQ(loaded->error().description(), reason);
    loop.advance(30s - 1ms);
    EXPECT_EQ(view->loads.size(), loads) << reason;
    loop.advance(1ms);
    EXPECT_EQ(view->loads.size(), loads + 1) << "though nobody asks";
  }

  engine().didFinish();
  engine().webProcessDidTerminate(true);
  loop.advance(10s);
  const auto loads = view->loads.size();
  start(page->waitForPageLoad(), loaded);
  EXPECT_EQ(view->loads.size(), loads + 1) << "who asks need not wait for the pause";
  EXPECT_FALSE(loaded) << "a page without its process is not loaded";
  loop.advance(30s);
  EXPECT_EQ(view->loads.size(), loads + 1) << "and the pause doesn't break that load off";
}

TEST_F(SignedInPageTest, NothingIsDownloaded) {
  for (const bool allowed : {true, false}) {
    std::vector<NavigationPolicy> policies;
    const auto reply = [&] {
      return platform::PolicyReply([&](NavigationPolicy policy) { policies.push_back(policy); },
                                   NavigationPolicy::download);
    };
    platform::NavigationAction action;
    action.shouldPerformDownload = !allowed;
    engine().decidePolicy(action, reply());
    platform::NavigationResponse response;
    response.canShowMimeType = allowed;
    engine().decidePolicy(response, reply());
    EXPECT_EQ(policies, std::vector(2, allowed ? NavigationPolicy::allow : NavigationPolicy::cancel));
  }
  const auto download = std::make_shared<support::FakeDownload>();
  bool ended = false;
  const auto subscription = download->failed.subscribe([&](const std::string&) { ended = true; });
  engine().didBecomeDownload(download);
  loop.runUntilIdle();
  EXPECT_TRUE(ended);
}

} // namespace
} // namespace ondrel::jmap
