#pragma once

#include "async/Scope.h"
#include "base/Event.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>

namespace ondrel::platform {
class WebView;
struct WebError;
} // namespace ondrel::platform

namespace ondrel::web {

class WindowViewModel;

// A failed load is tried again after 2, 4, 8, 16, 30, 30, ... seconds until one finishes.
inline constexpr std::chrono::seconds firstRetryDelay{2};
inline constexpr std::chrono::seconds longestRetryDelay{30};

constexpr std::chrono::seconds nextRetryDelay(std::chrono::seconds delay) {
  return std::min(delay * 2, longestRetryDelay);
}

// What becomes of the failed loads of a tab, and of those that its user stops. One that shows no page tries
// the failing address again by itself until it is stopped. A page that is shown is never replaced for a way
// away from it that failed, since its user may have written something into it: there the tab only tells, and
// its user has the address tried again. Main thread only.
class LoadRetry {
 public:
  LoadRetry(std::weak_ptr<WindowViewModel> viewModel, std::shared_ptr<platform::WebView> webView);
  ~LoadRetry();

  // What the engine tells. A failure that is told here is a real one: neither cancelled nor a download.
  void didCommit();
  void didFinish();
  void didFail(const platform::WebError& error, bool provisional);
  void webProcessDidTerminate() { showsPage_ = false; }

 private:
  void stop();
  async::Task<void> retryAfter(std::chrono::seconds delay, std::string url);

  const std::weak_ptr<WindowViewModel> viewModel_;
  const std::shared_ptr<platform::WebView> webView_;
  bool showsPage_ = false;
  std::chrono::seconds delay_ = firstRetryDelay;
  async::TaskHandle retry_;
  base::Subscription stops_;
  async::Scope scope_;
};

} // namespace ondrel::web
