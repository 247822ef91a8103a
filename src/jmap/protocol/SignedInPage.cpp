#include "jmap/protocol/SignedInPage.h"

#include "async/Deadline.h"
#include "async/sleep.h"
#include "base/Translation.h"
#include "platform/Deadlines.h"
#include "platform/WebView.h"
#include "settings/AppSettings.h"
#include "settings/ServicePage.h"

#include <cassert>

namespace ondrel::jmap {

namespace {

constexpr std::chrono::milliseconds signInLook{500};
constexpr std::chrono::milliseconds signInReload{900};
constexpr std::chrono::milliseconds pollPause{500};
constexpr int firstAttempts = 20;
constexpr int attemptsAfterReload = 10;
// The engine gives up after 60 s without a commit; this is for pages that begin and never end.
constexpr std::chrono::seconds longestLoad{120};
constexpr std::chrono::seconds retryPause{30};
// Between two loads for want of a token. Each finished load makes the event stream ask for one, which without
// this would load the page of a user who isn't signed in every ten seconds, for ever.
constexpr std::chrono::seconds recoveryPause{30};

} // namespace

SignedInPage::SignedInPage(platform::WebViewFactory& webViews, settings::AppSettings& settings,
                           std::function<void()> finished)
    : settings_(settings), finished_(std::move(finished)), webView_(webViews.make({})) {
  webView_->setDelegate(this);
}

SignedInPage::~SignedInPage() {
  webView_->setDelegate(nullptr);
}

void SignedInPage::load() {
  retry_.stop();
  loadDeadline_ = async::Timer(longestLoad, [this] { failWaiters(base::trMark("The request timed out.")); });
  webView_->load(settings_.baseURL());
}

async::Task<Result<void>> SignedInPage::waitForPageLoad() {
  if (isPageLoaded_)
    co_return Result<void>();
  if (readyContinuations_.empty())
    load();
  auto [resolver, future] = async::makeFuture<Result<void>>();
  readyContinuations_.push_back(std::move(resolver));
  auto loaded = co_await std::move(future);
  co_return loaded ? std::move(*loaded) : std::unexpected(JMAPError::cancelled());
}

async::Task<Result<std::optional<std::string>>> SignedInPage::pollAccessToken(int attempts) {
  assert(attempts >= 0);
  for (int i = 0; i < attempts; ++i) {
    if (const auto webView = webView_; isAtService()) {
      const auto answer = co_await webView->evaluate(std::string(settings::page::accessToken), std::nullopt,
                                                     platform::evaluationDeadline);
      const auto* token = answer ? answer->if_string() : nullptr;
      tokenIsMissing_ = !token || token->empty();
      if (!tokenIsMissing_)
        co_return std::string(*token);
    }
    const bool slept = co_await async::sleep(pollPause);
    if (!slept)
      co_return std::unexpected(JMAPError::cancelled());
  }
  co_return std::nullopt;
}

async::Task<Result<std::string>> SignedInPage::currentAccessToken() {
  for (const int attempts : {firstAttempts, attemptsAfterReload}) {
    auto loaded = co_await waitForPageLoad();
    if (!loaded)
      co_return std::unexpected(std::move(loaded.error()));
    auto token = co_await pollAccessToken(attempts);
    if (!token)
      co_return std::unexpected(std::move(token.error()));
    if (*token)
      co_return std::move(**token);
    if (attempts == firstAttempts) {
      if (!takeRecovery())
        break;
      isPageLoaded_ = false;
    }
  }
  co_return std::unexpected(JMAPError::notAuthenticated());
}

bool SignedInPage::takeRecovery() {
  const auto now = async::EventLoop::current().now();
  if (lastRecovery_ && now - *lastRecovery_ < recoveryPause)
    return false;
  lastRecovery_ = now;
  return true;
}

bool SignedInPage::isAtService() const {
  return settings_.isServiceOrigin(webView_->url().value_or(""));
}

async::Task<bool> SignedInPage::looksLikeSignIn() {
  if (!isAtService())
    co_return true; // the service has sent it to where people sign in
  const auto webView = webView_;
  const auto answer =
      co_await webView->evaluate(std::string(settings::page::asksToSignIn), std::nullopt, signInLook);
  co_return answer && answer->is_bool() && answer->get_bool();
}

async::Task<bool> SignedInPage::isSignInShown() {
  if (!isPageLoaded_)
    co_return signInWasShown_;
  signInWasShown_ = co_await looksLikeSignIn();
  if (!signInWasShown_ || !takeRecovery())
    co_return signInWasShown_;
  isPageLoaded_ = false;
  const auto loaded = co_await async::withDeadline(signInReload, waitForPageLoad());
  if (loaded && *loaded)
    signInWasShown_ = co_await looksLikeSignIn();
  co_return signInWasShown_;
}

// A page that only begins has no token yet either, and is left to it.
async::Task<void> SignedInPage::visiblePageDidLoad() {
  if (!tokenIsMissing_ || !isPageLoaded_)
    co_return;
  const bool asks = co_await looksLikeSignIn();
  if (asks)
    load();
}

void SignedInPage::didFinish() {
  loadDeadline_.stop();
  retry_.stop();
  isPageLoaded_ = true;
  for (auto& waiter : std::exchange(readyContinuations_, {}))
    waiter.resolve({});
  finished_();
}

// A cancelled load has another one behind it, ours or the page's own, whose outcome counts.
void SignedInPage::didFail(const platform::WebError& error) {
  if (!error.isCancelled())
    failWaiters(error.description);
}

void SignedInPage::webProcessDidTerminate(bool) {
  isPageLoaded_ = false;
  failWaiters(base::trMark("The page's process has ended."));
}

void SignedInPage::failWaiters(const std::string& reason) {
  loadDeadline_.stop();
  retry_ = async::Timer(retryPause, [this] { load(); });
  for (auto& waiter : std::exchange(readyContinuations_, {}))
    waiter.resolve(std::unexpected(JMAPError::navigationFailed(reason)));
}

} // namespace ondrel::jmap
