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
  if (!webView_ && !std::holds_alternative<RestoredPage>(viewModel_->firstPage))
    makeWebView();
}

void WebView::viewDidAppear() {
  if (!webView_)
    makeWebView();
}

void WebView::makeWebView() {
  const auto first = std::exchange(viewModel_->firstPage, AddressPage());
  const auto* popup = std::get_if<PopupPage>(&first);
  const auto& configuration = viewModel_->webViewConfiguration;
  webView_ = popup ? popup->webView : services_.webViews.make(configuration->userScripts);

  coordinator_ = std::make_unique<Coordinator>(viewModel_, webView_, configuration, services_);
  coordinator_->attach(popup != nullptr);

  viewModel_->setWebView(webView_);
  if (onWebViewMade)
    onWebViewMade(*webView_);
  // Restoring makes the engine tell the address of the page before.
  const auto wanted = *viewModel_->urlString;
  const auto* restored = std::get_if<RestoredPage>(&first);
  const bool hasState = restored && restored->state;
  const bool isReplaced = restored && restored->isReplaced;
  const bool isRestored = hasState && webView_->restoreInteractionState(
                                          *restored->state, isReplaced ? platform::RestoredLoad::nothing
                                                                       : platform::RestoredLoad::page);
  if (hasState && !isRestored)
    base::Logger("ui").error("The saved state of a tab could not be restored");

  if (popup || (isRestored && !isReplaced))
    return;
  viewModel_->urlString.set(wanted);
  viewModel_->loadURL();
}

} // namespace ondrel::web
