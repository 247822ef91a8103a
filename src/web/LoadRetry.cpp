#include "web/LoadRetry.h"

#include "async/sleep.h"
#include "base/Translation.h"
#include "platform/WebError.h"
#include "platform/WebView.h"
#include "web/WindowViewModel.h"

namespace ondrel::web {

namespace {

// The engine puts an empty page in the place of the one before when it refuses to connect to a port.
bool isBlank(const std::optional<std::string>& url) {
  return !url || url->empty() || *url == "about:blank";
}

} // namespace

LoadRetry::LoadRetry(std::weak_ptr<WindowViewModel> viewModel, std::shared_ptr<platform::WebView> webView)
    : viewModel_(std::move(viewModel)), webView_(std::move(webView)) {
  if (const auto tab = viewModel_.lock())
    stops_ = tab->stopAsked.subscribe([this] { stop(); });
}

LoadRetry::~LoadRetry() = default;

void LoadRetry::didCommit() {
  showsPage_ = true;
  retry_.cancel();
}

void LoadRetry::didFinish() {
  delay_ = firstRetryDelay;
}

void LoadRetry::didFail(const platform::WebError& error, bool provisional) {
  const auto viewModel = viewModel_.lock();
  if (!viewModel)
    return;
  using Kind = PageProblem::Kind;
  const auto url = error.failingURL.empty() ? *viewModel->urlString : error.failingURL;
  showsPage_ = showsPage_ && provisional && !isBlank(webView_->url());
  retry_.cancel();
  viewModel->pageProblem.set({showsPage_ ? Kind::navigationFailed : Kind::loadFailed, error.inWords(), url});
  if (showsPage_)
    return;
  viewModel->urlString.set(url);
  retry_ = scope_.spawn(retryAfter(delay_, url));
  delay_ = nextRetryDelay(delay_);
}

void LoadRetry::stop() {
  const auto viewModel = viewModel_.lock();
  if (!viewModel || !webView_->loadProgress())
    return;
  const auto url = *viewModel->urlString;
  retry_.cancel();
  webView_->stopLoading();
  // An empty window shall not look like a page.
  if (!showsPage_)
    viewModel->pageProblem.set({PageProblem::Kind::navigationFailed, base::tr("Loading was stopped."), url});
}

async::Task<void> LoadRetry::retryAfter(std::chrono::seconds delay, std::string url) {
  // A load that was asked for meanwhile has an outcome of its own, unless it is given up.
  do {
    const bool sleptThrough = co_await async::sleep(delay);
    if (!sleptThrough)
      co_return;
  } while (webView_->loadProgress());
  const auto viewModel = viewModel_.lock();
  if (!viewModel)
    co_return;
  viewModel->urlString.set(url);
  viewModel->loadURL();
}

} // namespace ondrel::web
