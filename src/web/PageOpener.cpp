#include "web/PageOpener.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "base/Url.h"
#include "platform/UriLauncher.h"
#include "platform/WebView.h"
#include "platform/WebViewDelegate.h"
#include "settings/AppSettings.h"
#include "web/MessageFiles.h"
#include "web/WebServices.h"
#include "web/WebViewConfiguration.h"
#include "web/WindowViewModel.h"

#include <utility>

namespace ondrel::web {

PageOpener::PageOpener(const std::shared_ptr<WindowViewModel>& viewModel, const WebServices& services,
                       ShowDownload showDownload)
    : viewModel_(viewModel), services_(services), showDownload_(std::move(showDownload)),
      openInNewWindow_(viewModel->openInNewWindow), openInNewTab_(viewModel->openInNewTab),
      externalLinks_(viewModel_, services, handOvers_) {
}

std::shared_ptr<WindowViewModel> PageOpener::newViewModel(const std::string& url) const {
  auto viewModel = WindowViewModel::make(services_);
  viewModel->urlString.set(url);
  viewModel->openInNewWindow = openInNewWindow_;
  viewModel->openInNewTab = openInNewTab_;
  return viewModel;
}

void PageOpener::openWindow(std::shared_ptr<WindowViewModel> opened) const {
  opened->openInNewWindow = openInNewWindow_;
  if (openInNewWindow_)
    openInNewWindow_(std::move(opened), true);
}

void PageOpener::open(const NavigationDecision& decision, const std::string& url, std::uint64_t gesture) {
  if (decision.use == NavigationUse::desktop) {
    handOver(url, gesture);
    return;
  }
  const auto& opens = decision.use == NavigationUse::window ? openInNewWindow_ : openInNewTab_;
  if (windows_.take(gesture) && opens)
    opens(newViewModel(url), decision.activates);
}

void PageOpener::handOver(const std::string& address, std::uint64_t gesture) {
  if (handOvers_.take(gesture))
    services_.uriLauncher.open(address);
  else
    logger_.info("A page's further link for the same click was not handed to the desktop");
}

void PageOpener::tellOfBlockedWindow(const std::optional<std::string>& url) {
  const auto viewModel = viewModel_.lock();
  if (!viewModel)
    return;
  PageNotice notice{.text = base::tr("A window was blocked.")};
  // An empty window is for the page to fill, which has been told that there is none.
  if (url && isWebAddress(*url)) {
    // TRANSLATORS: a button below that a window was blocked
    notice.button = base::tr("Open");
    if (url->starts_with(services_.settings.baseURL()) && openInNewTab_)
      notice.act = [open = openInNewTab_, opened = newViewModel(*url)] { open(opened, true); };
    else
      notice.act = [&services = services_, address = *url] { services.uriLauncher.open(address); };
  }
  viewModel->noticed.emit(notice);
}

std::shared_ptr<platform::WebView> PageOpener::createWebView(platform::NewWindowRequest request,
                                                             const platform::WebView& opener,
                                                             const WebViewConfiguration& configuration) {
  if (externalLinks_.take(request.action))
    return nullptr;
  if (!request.followsUser) {
    logger_.debug("createWebViewWith: blocked, nobody has clicked");
    tellOfBlockedWindow(request.action.url);
    return nullptr;
  }
  const auto url = request.action.url ? base::Url::parse(*request.action.url) : std::nullopt;
  if (!url || !url->scheme() || !url->host()) {
    logger_.debug("createWebViewWith: no URL / scheme / host — url={}", request.action.url.value_or("nil"));
    return nullptr;
  }
  const auto& address = url->absoluteString();
  // A page must not have files of this machine opened.
  if (base::lowercasedAscii(*url->scheme()) == "file") {
    logger_.debug("createWebViewWith: refused a file address");
    return nullptr;
  }
  logger_.debug("createWebViewWith: url={}", address);

  if (isUserContent(*url, services_.settings)) {
    const bool isMessageFile = address.contains("download="); // by the page's link to it
    if (const auto title = opener.title(); isMessageFile && title && url->isWeb()) {
      showDownload_(services_.messageFiles.saveEml(*title, address));
      return nullptr;
    }
    if (!isMessageFile)
      logger_.info("Show the raw value in a new window");
  }
  const auto place = placeOf(*url, services_.settings);
  if (place != NavigationUse::desktop)
    return openPopup(request, configuration, address,
                     place == NavigationUse::window ? openInNewWindow_ : openInNewTab_);
  handOver(address, request.action.gesture);
  return nullptr;
}

// The engine's side is made when it is known to be wanted: a web view is dear, and most answers are none.
std::shared_ptr<platform::WebView> PageOpener::openPopup(platform::NewWindowRequest& request,
                                                         const WebViewConfiguration& configuration,
                                                         const std::string& url, const OpenClosure& open) {
  if (!windows_.take(request.action.gesture)) {
    logger_.info("A page's further window for the same click was not opened");
    return nullptr;
  }
  auto webView = request.makeWebView(services_.scripts.popupScripts(configuration));
  auto viewModel = newViewModel(url);
  viewModel->toolbarVisible.set(false);
  viewModel->firstPage = PopupPage{webView};
  if (open)
    open(viewModel, true);
  return webView;
}

} // namespace ondrel::web
