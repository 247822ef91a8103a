#pragma once

#include "platform/PageFinder.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"

#include <webkit/webkit.h>

#include <queue>
#include <vector>

namespace ondrel::platform::webkit {

// Finds text with the engine's find controller.
class WebKitFinder final : public PageFinder {
 public:
  explicit WebKitFinder(WebKitWebView* view);

  void find(const std::string& text) override;
  void findNext() override;
  void findPrevious() override;
  void finish() override;

 private:
  enum class Request { search, step };
  void answered(unsigned matches);

  glib::Ref<WebKitFindController> controller_;
  std::queue<Request> unanswered_;
  unsigned matches_ = 0; // of the last search that was answered
  std::vector<glib::Connection> connections_;
};

} // namespace ondrel::platform::webkit
