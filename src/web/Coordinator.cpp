#include "web/Coordinator.h"

#include "platform/Download.h"
#include "platform/WebView.h"
#include "platform/Window.h"
#include "web/DownloadItem.h"
#include "web/WebServices.h"
#include "web/WindowViewModel.h"

namespace ondrel::web {

Coordinator::Coordinator(const std::shared_ptr<WindowViewModel>& viewModel,
                         std::shared_ptr<platform::WebView> webView,
                         std::shared_ptr<const WebViewConfiguration> configuration,
                         const WebServices& services)
    : viewModel_(viewModel), webView_(std::move(webView)), configuration_(std::move(configuration)),
      services_(services), openInNewWindow_(viewModel->openInNewWindow),
      openInNewTab_(viewModel->openInNewTab), loadRetry_(viewModel_, webView_),
      externalLinks_(viewModel_, services.workspace, handOvers_),
      letter_(viewModel, services.scripts.letterState()) {
}

Coordinator::~Coordinator() {
  scope_.cancelAll();
  if (const auto viewModel = viewModel_.lock())
    viewModel->dialogs.dismiss();
  webView_->setDelegate(nullptr);
  // A download goes on without its tab, and may ask where to go only now.
  for (const auto& [download, running] : downloadItems_)
    download->setDestinationHandler(nullptr);
  for (const auto& name : registeredHandlerNames_)
    webView_->removeScriptMessageHandler(name);
}

void Coordinator::attach(bool prebuilt) {
  auto names = configuration_->additionalMessageHandlerNames;
  names.insert(names.begin(), std::string(scriptMessageHandlerName));
  for (const auto& name : names) {
    // The opener may have filled the popup's side already, and a second registration is an error.
    if (prebuilt)
      webView_->removeScriptMessageHandler(name);
    webView_->addScriptMessageHandler(name);
  }
  registeredHandlerNames_ = std::move(names);
  webView_->setDelegate(this);
}

std::shared_ptr<WindowViewModel> Coordinator::newViewModel(const std::string& url) const {
  auto viewModel = WindowViewModel::make(services_);
  viewModel->urlString.set(url);
  viewModel->openInNewWindow = openInNewWindow_;
  viewModel->openInNewTab = openInNewTab_;
  return viewModel;
}

std::shared_ptr<platform::Window> Coordinator::window() const {
  const auto viewModel = viewModel_.lock();
  return viewModel ? viewModel->window.lock() : nullptr;
}

void Coordinator::updatePageState() {
  urlDidChange();
  backForwardListDidChange();
}

void Coordinator::urlDidChange() {
  const auto viewModel = viewModel_.lock();
  const auto url = webView_->url();
  if (viewModel && url && !url->empty())
    viewModel->urlString.set(*url);
}

void Coordinator::backForwardListDidChange() {
  const auto viewModel = viewModel_.lock();
  if (!viewModel)
    return;
  viewModel->canGoBack.set(webView_->canGoBack());
  viewModel->canGoForward.set(webView_->canGoForward());
}

void Coordinator::loadingDidChange() {
  if (const auto viewModel = viewModel_.lock())
    viewModel->isLoading.set(webView_->isLoading());
}

void Coordinator::responsivenessDidChange() {
  if (const auto viewModel = viewModel_.lock())
    viewModel->hangWatch.setResponsive(webView_->isResponsive());
}

void Coordinator::didClose() {
  closeWindow();
}

void Coordinator::closeWindow() {
  if (const auto viewModel = viewModel_.lock())
    viewModel->isDone = true;
  if (const auto window = this->window())
    window->close();
}

void Coordinator::webProcessDidTerminate(bool crashed) {
  uiLogger_.error("The web process of a tab has ended ({})", crashed ? "crash" : "terminated");
  loadRetry_.webProcessDidTerminate();
  if (const auto viewModel = viewModel_.lock()) {
    viewModel->isLoading.set(false);
    viewModel->dialogs.dismiss();
    viewModel->hangWatch.setResponsive(true);
    viewModel->pageProblem.set({PageProblem::Kind::processTerminated, {}});
  }
}

} // namespace ondrel::web
