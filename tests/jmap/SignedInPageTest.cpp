#include "jmap/SignedInPage.h"

#include "async/Scope.h"
#include "async/VirtualEventLoop.h"
#include "settings/AppSettings.h"
#include "support/FakeDesktop.h"
#include "support/FakeWebView.h"
#include "support/TestSite.h"

#include <boost/json/array.hpp>
#include <gtest/gtest.h>

namespace ondrel::jmap {
namespace {

using namespace std::chrono_literals;
namespace json = boost::json;
using platform::NavigationPolicy;
using platform::WebError;

const WebError refused{std::string(WebError::urlDomain), WebError::cannotConnectToHost, "refused"};

class SignedInPageTest : public testing::Test {
 protected:
  SignedInPageTest() {
    webViews.onMake = [this](support::FakeWebView& made) { view = &made; };
    page.emplace(webViews, settings, [this] { ++finished; });
    page->load();
  }
  platform::WebViewDelegate& engine() { return *view->delegate; }
  template <class T>
  static async::Task<void> store(async::Task<T> task, std::optional<T>& result) {
    result = co_await std::move(task);
  }
  async::TaskHandle poll(int attempts) {
    token.reset();
    return scope.spawn(store(page->pollAccessToken(attempts), token));
  }

  async::VirtualEventLoop loop;
  support::FakeDefaults defaults;
  settings::AppSettings settings{defaults, support::testSite()};
  support::FakeWebViewFactory webViews;
  support::FakeWebView* view = nullptr;
  int finished = 0;
  std::optional<SignedInPage> page;
  std::optional<Result<std::optional<std::string>>> token;
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
    poll(1);
    loop.advance(500ms);
    ASSERT_TRUE(token && *token);
    EXPECT_EQ(**token, expected);
  }
  poll(0);
  loop.runUntilIdle();
  EXPECT_EQ(**token, std::nullopt);
  EXPECT_EQ(view->evaluations.size(), std::size(cases)) << "none asks nothing";
}

TEST_F(SignedInPageTest, ACancelledPollEndsWithoutAnotherQuestion) {
  auto polling = poll(20);
  loop.advance(1200ms);
  polling.cancel();
  loop.advance(1min);
  ASSERT_TRUE(token && !*token);
  EXPECT_EQ(token->error(), JMAPError::cancelled());
  EXPECT_EQ(view->evaluations.size(), 3U);
}

TEST_F(SignedInPageTest, APageThatHasFinishedStays) {
  engine().didFailProvisional(refused);
  engine().didFinish(); // of a load that the page began itself
  loop.advance(1h);
  EXPECT_EQ(view->loads.size(), 1U) << "neither the pause nor the deadline is still running";
  EXPECT_EQ(finished, 1);
}

TEST_F(SignedInPageTest, APageThatIsLostComesBack) {
  const std::pair<const char*, std::function<void()>> losses[] = {
      {"Navigation failed: refused", [this] { engine().didFail(refused); }},
      {"Navigation failed: The page's process has ended.", [this] { engine().webProcessDidTerminate(true); }},
      {"Navigation failed: The request timed out.", [this] { loop.advance(2min); }}};
  for (const auto& [reason, lose] : losses) {
    page->forget();
    std::optional<Result<void>> loaded;
    scope.spawn(store(page->waitForPageLoad(), loaded));
    loop.runUntilIdle();
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
  std::optional<Result<void>> loaded;
  const auto loads = view->loads.size();
  scope.spawn(store(page->waitForPageLoad(), loaded));
  loop.runUntilIdle();
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
    const auto expected = allowed ? NavigationPolicy::allow : NavigationPolicy::cancel;
    EXPECT_EQ(policies, (std::vector{expected, expected}));
  }
  const auto download = std::make_shared<support::FakeDownload>();
  bool cancelled = false;
  const auto subscription = download->failed.subscribe([&](const std::string&) { cancelled = true; });
  engine().didBecomeDownload(download);
  EXPECT_TRUE(cancelled);
}

} // namespace
} // namespace ondrel::jmap
