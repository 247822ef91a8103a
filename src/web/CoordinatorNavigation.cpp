#include "web/Coordinator.h"

#include "base/Text.h"
#include "base/Url.h"
#include "platform/WebView.h"
#include "platform/Workspace.h"
#include "settings/AppSettings.h"
#include "web/MailURL.h"
#include "web/MessageFiles.h"
#include "web/NavigationRules.h"
#include "web/WebServices.h"
#include "web/WebViewConfiguration.h"
#include "web/WindowViewModel.h"

namespace ondrel::web {

using platform::Modifiers;
using platform::NavigationPolicy;

namespace {

// A load that the program starts passes by the engine's checks of what a page may link to (files of this
// machine, scripts): only addresses of the web are opened for a page. The rest stays with the engine.
bool isWebAddress(const std::optional<std::string>& address) {
  const auto url = address ? base::Url::parse(*address) : std::nullopt;
  return url && url->isWeb();
}

// Whose page stands in a window of the program, where it isn't the service's.
std::string foreignHostOf(const std::string& address, const settings::AppSettings& settings) {
  const auto url = base::Url::parse(address);
  if (!url)
    return address;
  return url->host() && !settings.isServiceOrigin(address) ? url->hostWithPort() : "";
}

bool isUserContent(const base::Url& url, const settings::Site& site) {
  const auto& suffix = site.userContentDomainSuffix;
  return !suffix.empty() && url.host() &&
         (url.host()->ends_with(suffix) || url.hostWithPort().ends_with(suffix));
}

} // namespace

void Coordinator::decidePolicy(const platform::NavigationAction& action, platform::PolicyReply reply) {
  if (externalLinks_.take(action)) {
    std::move(reply)(NavigationPolicy::cancel);
    return;
  }
  const auto& modifiers = action.modifiers;
  if (action.type == platform::NavigationType::linkActivated && modifiers.contains(Modifiers::command) &&
      isWebAddress(action.url)) {
    const bool mayOpen = windows_.take(action.gesture);
    const auto& open = modifiers.contains(Modifiers::option) ? openInNewWindow_ : openInNewTab_;
    if (open && mayOpen)
      open(newViewModel(*action.url), modifiers.contains(Modifiers::shift));
    std::move(reply)(NavigationPolicy::cancel);
    return;
  }
  if (action.shouldPerformDownload) {
    std::move(reply)(NavigationPolicy::download);
    return;
  }
  if (action.url && addressUse(*action.url, TargetFrame::unknown) == AddressUse::cancel) {
    std::move(reply)(NavigationPolicy::cancel);
    return;
  }
  if (!wouldReplaceLetter(action)) {
    std::move(reply)(NavigationPolicy::allow);
    return;
  }
  const auto place = placeOf(*base::Url::parse(*action.url));
  const auto& open = place == Place::window ? openInNewWindow_ : openInNewTab_;
  if (place == Place::desktop)
    handOver(*action.url, action.gesture);
  else if (open && windows_.take(action.gesture))
    open(newViewModel(*action.url), true);
  std::move(reply)(NavigationPolicy::cancel);
}

void Coordinator::handOver(const std::string& address, std::uint64_t gesture) {
  if (handOvers_.take(gesture))
    services_.workspace.open(address);
  else
    uiLogger_.info("A page's further link for the same click was not handed to the desktop");
}

// Where a page opens that isn't to show in this tab.
Coordinator::Place Coordinator::placeOf(const base::Url& url) const {
  if (isUserContent(url, services_.settings.site()))
    return Place::desktop;
  if (containsMail(url.absoluteString()) && services_.settings.isServiceOrigin(url.absoluteString()))
    return Place::window;
  const bool sameOrigin = *url.scheme() + "://" + url.hostWithPort() + "/" == services_.settings.baseURL();
  return sameOrigin ? Place::tab : Place::desktop;
}

// A link of the page leads it, or a frame in it, away from a letter. What the application does
// by itself goes on: it knows about its letters.
bool Coordinator::wouldReplaceLetter(const platform::NavigationAction& action) const {
  const auto viewModel = viewModel_.lock();
  if (action.type != platform::NavigationType::linkActivated || !viewModel || !viewModel->isWritingLetter() ||
      !isWebAddress(action.url))
    return false;
  const auto withoutFragment = [](const std::string& url) { return url.substr(0, url.find('#')); };
  return withoutFragment(*action.url) != withoutFragment(webView_->url().value_or(""));
}

void Coordinator::decidePolicy(const platform::NavigationResponse& response, platform::PolicyReply reply) {
  const bool isAttachment = response.isHttp && response.contentDisposition &&
                            base::lowercasedAscii(*response.contentDisposition).starts_with("attachment");
  if (isAttachment || !response.canShowMimeType)
    std::move(reply)(NavigationPolicy::download);
  else if (response.isMainFrame && addressUse(response.url, TargetFrame::main) != AddressUse::stay)
    std::move(reply)(NavigationPolicy::cancel);
  else
    std::move(reply)(NavigationPolicy::allow);
}

void Coordinator::didCommit() {
  titleIsDue_ = false;
  loadRetry_.didCommit();
  if (const auto viewModel = viewModel_.lock()) {
    viewModel->pageProblem.set({});
    viewModel->dialogs.pageDidCommit(webView_->url().value_or(""));
    viewModel->foreignHost.set(foreignHostOf(webView_->url().value_or(""), services_.settings));
    viewModel->reportsWriting = false;
  }
  updatePageState();
}

void Coordinator::didFinish() {
  loadRetry_.didFinish();
  updatePageState();
  const auto viewModel = viewModel_.lock();
  if (!viewModel)
    return;
  const auto title = webView_->title().value_or("");
  viewModel->title.set(title.empty() ? "New Tab" : title);
  titleIsDue_ = title.empty();
  viewModel->pageProblem.set({});
}

void Coordinator::titleDidChange() {
  const auto viewModel = viewModel_.lock();
  const auto title = webView_->title().value_or("");
  // Where a script reports the title by message, the page's own later changes don't count.
  if ((configuration_->reportsTitle && !titleIsDue_) || !viewModel || title.empty())
    return;
  titleIsDue_ = false;
  viewModel->title.set(title);
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
  uiLogger_.error("{}: navigation failed — {} {} {}", label, error.domain, error.code, error.description);
  loadRetry_.didFail(error, provisional);
}

void Coordinator::tellOfBlockedWindow(const std::optional<std::string>& url) {
  const auto viewModel = viewModel_.lock();
  if (!viewModel)
    return;
  PageNotice notice{.text = "A window was blocked."};
  // An empty window is for the page to fill, which has been told that there is none.
  if (isWebAddress(url)) {
    notice.button = "Open";
    if (url->starts_with(services_.settings.baseURL()) && openInNewTab_)
      notice.act = [open = openInNewTab_, opened = newViewModel(*url)] { open(opened, true); };
    else
      notice.act = [&services = services_, address = *url] { services.workspace.open(address); };
  }
  viewModel->noticed.emit(notice);
}

std::shared_ptr<platform::WebView> Coordinator::createWebView(platform::NewWindowRequest request) {
  if (externalLinks_.take(request.action))
    return nullptr;
  if (!request.followsUser) {
    uiLogger_.debug("createWebViewWith: blocked, nobody has clicked");
    tellOfBlockedWindow(request.action.url);
    return nullptr;
  }
  const auto url = request.action.url ? base::Url::parse(*request.action.url) : std::nullopt;
  if (!url || !url->scheme() || !url->host()) {
    uiLogger_.debug("createWebViewWith: no URL / scheme / host — url={}", request.action.url.value_or("nil"));
    return nullptr;
  }
  const auto& address = url->absoluteString();
  // A page must not have files of this machine opened.
  if (base::lowercasedAscii(*url->scheme()) == "file") {
    uiLogger_.debug("createWebViewWith: refused a file address");
    return nullptr;
  }
  uiLogger_.debug("createWebViewWith: url={}", address);

  // The engine's side is made when it is known to be wanted: a web view is dear, and most answers are none.
  const auto open = [&](const OpenClosure& closure) -> std::shared_ptr<platform::WebView> {
    if (!windows_.take(request.action.gesture)) {
      uiLogger_.info("A page's further window for the same click was not opened");
      return nullptr;
    }
    auto webView = request.makeWebView(services_.scripts.popupScripts(*configuration_));
    auto viewModel = newViewModel(address);
    viewModel->toolbarVisible.set(false);
    viewModel->prebuiltWebView = webView;
    if (closure)
      closure(viewModel, true);
    return webView;
  };

  if (isUserContent(*url, services_.settings.site())) {
    const bool isMessageFile = address.contains("download="); // by the page's link to it
    if (const auto title = webView_->title(); isMessageFile && title && url->isWeb()) {
      services_.messageFiles.saveEml(*title, address);
      return nullptr;
    }
    if (!isMessageFile)
      uiLogger_.info("Show the raw value in a new window");
  }
  switch (placeOf(*url)) {
  case Place::window:
    return open(openInNewWindow_);
  case Place::tab:
    return open(openInNewTab_);
  case Place::desktop:
    handOver(address, request.action.gesture);
    return nullptr;
  }
  return nullptr;
}

} // namespace ondrel::web
