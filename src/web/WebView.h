#pragma once

#include <functional>
#include <memory>

namespace ondrel::platform {
class WebView;
}

namespace ondrel::web {

class Coordinator;
class WindowViewModel;
struct WebServices;

// The place of a tab's web view in the interface: makes the web view and its coordinator when it is time, and
// takes both apart when it dies. Main thread only.
class WebView {
 public:
  WebView(std::shared_ptr<WindowViewModel> viewModel, const WebServices& services);
  ~WebView();
  WebView(const WebView&) = delete;
  WebView& operator=(const WebView&) = delete;

  // The tab has its place in a window: makes the web view, but for a restored tab.
  void viewDidLoad();
  // The tab is in front: makes the web view if there is none yet.
  void viewDidAppear();

  // Called with the web view when it has been made.
  std::function<void(platform::WebView&)> onWebViewMade;

 private:
  void makeWebView();

  std::shared_ptr<WindowViewModel> viewModel_;
  const WebServices& services_;
  std::unique_ptr<Coordinator> coordinator_;
  std::shared_ptr<platform::WebView> webView_;
};

} // namespace ondrel::web
