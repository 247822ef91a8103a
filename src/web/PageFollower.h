#pragma once

#include <memory>

namespace ondrel::platform {
class WebView;
}

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::web {

class WindowViewModel;

// Keeps what a tab shows of its page (address, title, back and forward, problems) as the engine tells it.
// Main thread only.
class PageFollower {
 public:
  // Where a script reports the title by message, the page's own later changes of it don't count.
  PageFollower(std::weak_ptr<WindowViewModel> viewModel, std::shared_ptr<platform::WebView> webView,
               const settings::AppSettings& settings, bool scriptReportsTitle);

  void didCommit();
  void didFinish();
  void didTerminate();
  void urlDidChange();
  void historyDidChange();
  void titleDidChange();
  void loadingDidChange();
  void responsivenessDidChange();

 private:
  const std::weak_ptr<WindowViewModel> viewModel_;
  const std::shared_ptr<platform::WebView> webView_;
  const settings::AppSettings& settings_;
  const bool scriptReportsTitle_;
  bool titleIsDue_ = false; // the page finished without one, which may still be on its way
};

} // namespace ondrel::web
