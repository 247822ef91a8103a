#include "web/Coordinator.h"

#include "platform/Download.h"
#include "platform/Panels.h"
#include "platform/WebView.h"
#include "platform/Window.h"
#include "web/WebServices.h"
#include "web/WebViewConfiguration.h"
#include "web/WindowViewModel.h"

#include <utility>

namespace ondrel::web {

using platform::NavigationPolicy;

namespace {

using WeakWindow = std::weak_ptr<platform::Window>;

async::Task<void> answerOpenPanel(platform::Panels& panels, platform::OpenPanel panel, WeakWindow window,
                                  platform::FilesReply reply) {
  auto files = co_await panels.runOpenPanel(std::move(panel), window.lock());
  std::move(reply)(std::move(files));
}

NavigationPolicy policyOf(NavigationUse use) {
  if (use == NavigationUse::allow)
    return NavigationPolicy::allow;
  return use == NavigationUse::download ? NavigationPolicy::download : NavigationPolicy::cancel;
}

} // namespace

Coordinator::Coordinator(const std::shared_ptr<WindowViewModel>& viewModel,
                         std::shared_ptr<platform::WebView> webView,
                         std::shared_ptr<const WebViewConfiguration> configuration,
                         const WebServices& services)
    : viewModel_(viewModel), webView_(std::move(webView)), configuration_(std::move(configuration)),
      services_(services), follower_(viewModel_, webView_, services.settings, configuration_->reportsTitle),
      loadRetry_(viewModel_, webView_), additions_(viewModel_, services), downloads_(viewModel_, services),
      opener_(viewModel, services, [this](const auto& item) { downloads_.show(item); }),
      menu_(viewModel_, webView_, services,
            [this](const platform::NavigationAction& action) {
              // Like a click that the engine asks about, but the page stays where it is.
              decidePolicy(action, platform::PolicyReply([](NavigationPolicy) {}, NavigationPolicy::cancel));
            }),
      letter_(viewModel, services.scripts.letterState()), messages_(viewModel_, services, opener_, letter_) {
}

Coordinator::~Coordinator() {
  scope_.cancelAll();
  if (const auto viewModel = viewModel_.lock())
    viewModel->dialogs.dismiss();
  webView_->setDelegate(nullptr);
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

void Coordinator::decidePolicy(const platform::NavigationAction& action, platform::PolicyReply reply) {
  if (opener_.takeExternal(action)) {
    std::move(reply)(NavigationPolicy::cancel);
    return;
  }
  const auto viewModel = viewModel_.lock();
  const auto decision =
      decideNavigation(action, {.settings = services_.settings,
                                .url = webView_->url().value_or(""),
                                .isWritingLetter = viewModel && viewModel->isWritingLetter()});
  if (policyOf(decision.use) == NavigationPolicy::cancel && decision.use != NavigationUse::cancel)
    opener_.open(decision, *action.url, action.gesture);
  std::move(reply)(policyOf(decision.use));
}

void Coordinator::decidePolicy(const platform::NavigationResponse& response, platform::PolicyReply reply) {
  std::move(reply)(policyOf(decideResponse(response)));
}

std::shared_ptr<platform::WebView> Coordinator::createWebView(platform::NewWindowRequest request) {
  return opener_.createWebView(std::move(request), *webView_, *configuration_);
}

void Coordinator::didBecomeDownload(std::shared_ptr<platform::Download> download) {
  downloads_.take(std::move(download));
}

void Coordinator::didReceiveScriptMessage(const platform::ScriptMessage& message) {
  messages_.receive(message);
}

void Coordinator::didCommit() {
  loadRetry_.didCommit();
  additions_.pageGoes();
  follower_.didCommit();
}

void Coordinator::didFinish() {
  loadRetry_.didFinish();
  follower_.didFinish();
  additions_.didFinish();
}

void Coordinator::didFail(const platform::WebError& error) {
  failed("didFail", error, false);
}

void Coordinator::didFailProvisional(const platform::WebError& error) {
  failed("didFailProvisionalNavigation", error, true);
}

void Coordinator::failed(std::string_view label, const platform::WebError& error, bool provisional) {
  if (error.isCancelled() || error.isInterruptedByPolicy())
    return;
  logger_.error("{}: navigation failed — {} {} {}", label, error.domainName(), error.code, error.description);
  loadRetry_.didFail(error, provisional);
}

void Coordinator::webProcessDidTerminate(bool crashed) {
  logger_.error("The web process of a tab has ended ({})", crashed ? "crash" : "terminated");
  loadRetry_.webProcessDidTerminate();
  additions_.pageGoes();
  follower_.didTerminate();
}

void Coordinator::titleDidChange() {
  follower_.titleDidChange();
}

void Coordinator::urlDidChange() {
  follower_.urlDidChange();
}

void Coordinator::backForwardListDidChange() {
  follower_.historyDidChange();
}

void Coordinator::loadingDidChange() {
  follower_.loadingDidChange();
}

void Coordinator::responsivenessDidChange() {
  follower_.responsivenessDidChange();
}

// The window goes for good.
void Coordinator::didClose() {
  const auto viewModel = viewModel_.lock();
  if (!viewModel)
    return;
  viewModel->isDone = true;
  if (const auto window = viewModel->window.lock())
    window->close();
}

// The engine doesn't tell which frame asks: all of them speak for the tab's page.
void Coordinator::runAlertPanel(const std::string& message, platform::DoneReply reply) {
  letter_.pageAsks();
  if (const auto viewModel = viewModel_.lock())
    viewModel->dialogs.alert(webView_->url().value_or(""), message, std::move(reply));
}

void Coordinator::runConfirmPanel(const std::string& message, platform::DoneReply reply) {
  letter_.pageAsks();
  if (const auto viewModel = viewModel_.lock())
    viewModel->dialogs.confirm(webView_->url().value_or(""), message, std::move(reply));
}

void Coordinator::runPromptPanel(const std::string& message, const std::string& text,
                                 platform::PromptReply reply) {
  letter_.pageAsks();
  if (const auto viewModel = viewModel_.lock())
    viewModel->dialogs.prompt(webView_->url().value_or(""), message, text, std::move(reply));
}

void Coordinator::runBeforeUnloadPanel(platform::DoneReply reply) {
  const auto viewModel = viewModel_.lock();
  if (!viewModel)
    return;
  viewModel->dialogs.leave(
      {[weak = viewModel_, webView = std::weak_ptr(webView_), inner = std::move(reply)](bool leave) mutable {
         std::move(inner)(leave);
         const auto tab = weak.lock();
         const auto page = webView.lock();
         // An address that was asked for is not where the tab is.
         if (const auto url = page ? page->url() : std::nullopt; tab && url && !leave)
           tab->urlString.set(*url);
       },
       false});
}

void Coordinator::runOpenPanel(const platform::OpenPanelParameters& parameters, platform::FilesReply reply) {
  letter_.pageAsks();
  const auto viewModel = viewModel_.lock();
  platform::OpenPanel panel;
  panel.allowsMultipleSelection = parameters.allowsMultipleSelection;
  panel.mimeTypes = parameters.mimeTypes;
  scope_.spawn(answerOpenPanel(services_.panels, std::move(panel),
                               viewModel ? viewModel->window : WeakWindow(), std::move(reply)));
}

platform::ContextMenu Coordinator::contextMenu(const platform::ContextHit& hit) {
  return menu_.rows(hit);
}

void Coordinator::didChoose(platform::MenuAction action, const platform::ContextHit& hit,
                            std::uint64_t gesture) {
  menu_.perform(action, hit, gesture);
}

void Coordinator::didRefuseFiles(const std::string& text) {
  if (const auto viewModel = viewModel_.lock())
    viewModel->noticed.emit({.text = text});
}

} // namespace ondrel::web
