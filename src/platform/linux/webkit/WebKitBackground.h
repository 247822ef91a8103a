#pragma once

#include "async/Timer.h"
#include "platform/linux/glib/Connection.h"

#include <webkit/webkit.h>

namespace ondrel::platform::webkit {

// What a web view shows where its page draws nothing: before the first page, between pages, and behind pages
// without a background of their own. Follows the desktop's style, so that nothing flashes white in the dark,
// also when the style has changed while the page was not on the screen. Main thread only.
class WebKitBackground {
 public:
  // The view outlives it.
  explicit WebKitBackground(WebKitWebView* view);

  // Another document takes the place of the page.
  void documentBegan() { set(false); }
  // The page shows dark text and draws no background, since pages may count on white.
  void pageWantsWhite() { set(true); }

 private:
  void set(bool pageWantsWhite);
  void update() const;
  void styleDidChange();
  void viewDidMap();

  WebKitWebView* const view_;
  bool pageWantsWhite_ = false;
  bool isCovered_ = false; // until the engine has drawn the page in the new style
  async::Timer uncover_;
  glib::Connection styleChanged_;
  glib::Connection mapped_;
};

} // namespace ondrel::platform::webkit
