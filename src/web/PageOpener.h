#pragma once

#include "base/Log.h"
#include "web/ExternalLinks.h"
#include "web/page/GestureLimit.h"
#include "web/page/NavigationDecision.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace ondrel::base {
class Url;
}

namespace ondrel::platform {
class WebView;
struct NavigationAction;
struct NewWindowRequest;
} // namespace ondrel::platform

namespace ondrel::web {

class DownloadItem;
class WindowViewModel;
struct WebServices;
struct WebViewConfiguration;

// Opens for a tab's page what isn't shown in the tab: one window or tab and one program of the desktop for
// each press of the user. Main thread only.
class PageOpener {
 public:
  using ShowDownload = std::function<void(const std::shared_ptr<DownloadItem>&)>;

  // The services outlive it. `showDownload` gets the files that the page opens instead of windows.
  PageOpener(const std::shared_ptr<WindowViewModel>& viewModel, const WebServices& services,
             ShowDownload showDownload);

  // True when the navigation leads to another program, which is opened then if it may be.
  bool takeExternal(const platform::NavigationAction& action) { return externalLinks_.take(action); }
  // window, tab or desktop.
  void open(const NavigationDecision& decision, const std::string& url, std::uint64_t gesture);
  // The page has asked for a window: the engine's side of it, or null. `opener` is the page's own web view,
  // `configuration` what its tab runs.
  std::shared_ptr<platform::WebView> createWebView(platform::NewWindowRequest request,
                                                   const platform::WebView& opener,
                                                   const WebViewConfiguration& configuration);
  // A new window beside the tabs, for a view model made by the caller.
  void openWindow(std::shared_ptr<WindowViewModel> opened) const;

 private:
  using OpenClosure = std::function<void(std::shared_ptr<WindowViewModel>, bool activate)>;

  std::shared_ptr<WindowViewModel> newViewModel(const std::string& url) const;
  std::shared_ptr<platform::WebView> openPopup(platform::NewWindowRequest& request,
                                               const WebViewConfiguration& configuration,
                                               const std::string& url, const OpenClosure& open);
  void tellOfBlockedWindow(const std::optional<std::string>& url);
  void handOver(const std::string& address, std::uint64_t gesture);

  const std::weak_ptr<WindowViewModel> viewModel_;
  const WebServices& services_;
  const ShowDownload showDownload_;
  const OpenClosure openInNewWindow_;
  const OpenClosure openInNewTab_;
  const base::Logger logger_{"ui"};
  GestureLimit windows_;   // that the page opens
  GestureLimit handOvers_; // to the desktop
  ExternalLinks externalLinks_;
};

} // namespace ondrel::web
