#include "attachments/LinkPage.h"

#include "async/sleep.h"
#include "base/Json.h"
#include "base/Translation.h"
#include "platform/Deadlines.h"
#include "platform/WebView.h"
#include "settings/AppSettings.h"
#include "settings/ServicePage.h"

#include <boost/json/serialize.hpp>

namespace ondrel::attachments {

namespace {

constexpr int attempts = 60;
constexpr int attemptsForALine = 6;
constexpr std::chrono::milliseconds pause{500};
// Of all attempts: a page that hangs takes the whole deadline for each.
constexpr std::chrono::seconds longestSearch{60};
constexpr std::chrono::milliseconds signInLook{500};
// The first look may come while the application is on its way from one page to another.
constexpr int signInLooks = 2;
constexpr int signInAttempts = 20;

} // namespace

LinkPage::LinkPage(platform::WebViewFactory& webViews, const settings::AppSettings& settings,
                   const std::string& script)
    : webViews_(webViews), settings_(settings), script_(script) {
}

LinkPage::~LinkPage() {
  close();
}

void LinkPage::open() {
  if (webView_)
    return;
  webView_ = webViews_.make({});
  webView_->setDelegate(this);
  webView_->load(settings_.baseURL());
}

void LinkPage::close() {
  hasCommitted_ = false;
  if (const auto webView = std::exchange(webView_, nullptr))
    webView->setDelegate(nullptr);
}

bool LinkPage::isAtService() const {
  return webView_ && settings_.isServiceOrigin(webView_->url().value_or(""));
}

async::Task<bool> LinkPage::looksLikeSignIn() {
  if (!hasCommitted_)
    co_return false;
  if (!isAtService())
    co_return true;
  const auto webView = webView_;
  const auto answer =
      co_await webView->evaluate(std::string(settings::page::asksToSignIn), std::nullopt, signInLook);
  co_return answer && answer->is_bool() && answer->get_bool();
}

void LinkPage::load(const std::string& url) {
  open();
  failure_.reset();
  hasCommitted_ = false;
  webView_->load(url);
}

async::Task<bool> LinkPage::isSignInShown(std::function<bool()> isWanted) {
  load(settings_.baseURL());
  int seen = 0;
  for (int i = 0; i < signInAttempts && isWanted() && !failure_; ++i) {
    const bool slept = co_await async::sleep(pause);
    if (!slept)
      co_return false;
    const bool isSignIn = co_await looksLikeSignIn();
    seen = isSignIn ? seen + 1 : 0;
    if (seen == signInLooks)
      co_return true;
  }
  co_return false;
}

async::Task<Result<std::string>> LinkPage::resolveAttachmentHref(std::string emailURL, std::string blobId) {
  load(emailURL);
  const auto webView = webView_;
  std::string_view domain = settings_.site().userContentDomainSuffix;
  if (domain.starts_with('.'))
    domain.remove_prefix(1);
  const auto call = script_ + "(" + base::jsonStringLiteral(blobId) + ", " +
                    base::jsonStringLiteral(std::string(domain)) + ");";
  const auto end = async::EventLoop::current().after(longestSearch);
  int signInsSeen = 0;
  for (int i = 0; i < attempts && async::EventLoop::current().now() < end; ++i) {
    platform::ScriptResult found =
        std::unexpected(platform::ScriptError{platform::ScriptError::Kind::gone, "the page isn't there"});
    if (hasCommitted_ && isAtService()) {
      found = co_await webView->evaluate(call, std::nullopt, platform::evaluationDeadline);
      if (found && found->is_string())
        co_return std::string(found->get_string());
    }
    if (i % attemptsForALine == 0) {
      if (found)
        logger_.debug("AttachmentDownloader: attempt {} — link not found yet ({})", i,
                      boost::json::serialize(*found));
      else
        logger_.debug("AttachmentDownloader: attempt {} — script error: {}", i, found.error().message);
    }
    const bool isSignIn = co_await looksLikeSignIn();
    signInsSeen = isSignIn ? signInsSeen + 1 : 0;
    if (signInsSeen == signInLooks)
      co_return std::unexpected(AttachmentError{AttachmentError::Kind::notSignedIn});
    const bool slept = co_await async::sleep(pause);
    if (!slept)
      co_return std::unexpected(AttachmentError{AttachmentError::Kind::cancelled});
    if (failure_)
      co_return std::unexpected(AttachmentError::told(*failure_));
  }
  if (!webView->isResponsive() || async::EventLoop::current().now() >= end)
    close(); // it may hang for ever: the next one gets a page of its own
  co_return std::unexpected(AttachmentError{AttachmentError::Kind::linkNotFound});
}

// A cancelled load has another one behind it, ours or the page's own.
void LinkPage::didFail(const platform::WebError& error) {
  if (!error.isCancelled())
    failure_ = error.inWords();
}

void LinkPage::webProcessDidTerminate(bool) {
  close();
  failure_ = base::tr("The page's process has ended. Try again.");
}

} // namespace ondrel::attachments
