#include "web/WebView.h"

#include "base/Log.h"
#include "platform/WebView.h"
#include "web/Coordinator.h"
#include "web/WebServices.h"
#include "web/WindowViewModel.h"

namespace ondrel::web {

WebView::WebView(std::shared_ptr<WindowViewModel> viewModel, const WebServices& services)
    : viewModel_(std::move(viewModel)), services_(services) {
}

WebView::~WebView() {
  if (!coordinator_)
    return;
  coordinator_.reset();
  if (viewModel_->liveWebView() == webView_)
    viewModel_->setWebView(nullptr);
}

void WebView::viewDidLoad() {
  if (!webView_ && !viewModel_->loadsWhenShown)
    makeWebView();
}

void WebView::viewDidAppear() {
  if (!webView_)
    makeWebView();
}

void WebView::makeWebView() {
  auto prebuilt = std::exchange(viewModel_->prebuiltWebView, nullptr);
  const bool wasPrebuilt = prebuilt != nullptr;
  const auto& configuration = viewModel_->webViewConfiguration;
  webView_ = wasPrebuilt ? std::move(prebuilt) : services_.webViews.make(configuration->userScripts);

  coordinator_ = std::make_unique<Coordinator>(viewModel_, webView_, configuration, services_);
  coordinator_->attach(wasPrebuilt);
  webView_->setInspectable(false);

  const auto restorationData = std::exchange(viewModel_->restorationData, std::nullopt);
  viewModel_->setWebView(webView_);
  if (onWebViewMade)
    onWebViewMade(*webView_);
  // Restoring makes the engine tell the address of the page before.
  const auto wanted = *viewModel_->urlString;
  const bool isRestored = restorationData && webView_->restoreInteractionState(*restorationData);
  if (restorationData && !isRestored)
    base::Logger("ui").error("The saved state of a tab could not be restored");

  const bool anotherPage = std::exchange(viewModel_->loadsURLAfterRestoring, false);
  if (wasPrebuilt || (isRestored && !anotherPage))
    return;
  viewModel_->urlString.set(wanted);
  viewModel_->loadURL();
}

} // namespace ondrel::web
