#include "web/PageFollower.h"

#include "base/Translation.h"
#include "base/Url.h"
#include "platform/WebView.h"
#include "settings/AppSettings.h"
#include "web/WindowViewModel.h"

#include <utility>

namespace ondrel::web {

namespace {

// Whose page stands in a window of the program, where it isn't the service's.
std::string foreignHostOf(const std::string& address, const settings::AppSettings& settings) {
  const auto url = base::Url::parse(address);
  if (!url)
    return address;
  return url->host() && !settings.isServiceOrigin(address) ? url->hostWithPort() : "";
}

} // namespace

PageFollower::PageFollower(std::weak_ptr<WindowViewModel> viewModel,
                           std::shared_ptr<platform::WebView> webView, const settings::AppSettings& settings,
                           bool scriptReportsTitle)
    : viewModel_(std::move(viewModel)), webView_(std::move(webView)), settings_(settings),
      scriptReportsTitle_(scriptReportsTitle) {
}

void PageFollower::didCommit() {
  titleIsDue_ = false;
  if (const auto viewModel = viewModel_.lock()) {
    const auto url = webView_->url().value_or("");
    viewModel->pageProblem.set({});
    viewModel->dialogs.pageDidCommit(url);
    viewModel->foreignHost.set(foreignHostOf(url, settings_));
    viewModel->reportsWriting = false;
    viewModel->search.pageDidChange();
    viewModel->mouseOverString.set("");
  }
  urlDidChange();
  historyDidChange();
}

void PageFollower::didFinish() {
  urlDidChange();
  historyDidChange();
  const auto viewModel = viewModel_.lock();
  if (!viewModel)
    return;
  const auto title = webView_->title().value_or("");
  viewModel->title.set(title.empty() ? base::tr("New Tab") : title);
  titleIsDue_ = title.empty();
  viewModel->pageProblem.set({});
}

void PageFollower::titleDidChange() {
  const auto viewModel = viewModel_.lock();
  const auto title = webView_->title().value_or("");
  if ((scriptReportsTitle_ && !titleIsDue_) || !viewModel || title.empty())
    return;
  titleIsDue_ = false;
  viewModel->title.set(title);
}

void PageFollower::urlDidChange() {
  const auto viewModel = viewModel_.lock();
  const auto url = webView_->url();
  if (!viewModel || !url || url->empty() || *url == *viewModel->urlString)
    return;
  viewModel->urlString.set(*url);
  // What the page shows changes with it.
  viewModel->search.pageDidChange();
  viewModel->mouseOverString.set("");
}

void PageFollower::historyDidChange() {
  const auto viewModel = viewModel_.lock();
  if (!viewModel)
    return;
  viewModel->canGoBack.set(webView_->canGoBack());
  viewModel->canGoForward.set(webView_->canGoForward());
}

void PageFollower::loadingDidChange() {
  const auto viewModel = viewModel_.lock();
  if (!viewModel)
    return;
  const auto progress = webView_->loadProgress();
  if (progress)
    viewModel->loadProgress.set(*progress);
  viewModel->isLoading.set(progress.has_value());
}

void PageFollower::responsivenessDidChange() {
  if (const auto viewModel = viewModel_.lock())
    viewModel->hangWatch.setResponsive(webView_->isResponsive());
}

void PageFollower::didTerminate() {
  const auto viewModel = viewModel_.lock();
  if (!viewModel)
    return;
  viewModel->isLoading.set(false);
  viewModel->mouseOverString.set("");
  viewModel->search.close();
  viewModel->dialogs.dismiss();
  viewModel->hangWatch.setResponsive(true);
  viewModel->pageProblem.set({PageProblem::Kind::processTerminated, {}});
}

} // namespace ondrel::web
