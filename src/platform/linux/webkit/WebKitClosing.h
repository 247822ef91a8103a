#pragma once

#include "async/Future.h"
#include "async/Scope.h"
#include "platform/WebView.h"
#include "platform/linux/glib/Ref.h"

#include <webkit/webkit.h>

#include <memory>
#include <optional>

namespace ondrel::platform::webkit {

// Asks one page whether it may go. The engine alone isn't enough: it says "close" for a page that has not
// answered within 50 ms, be it only busy, and again after a "no" that took as long to arrive. So a message
// sent behind its question tells that the page has come past it, and "close" says nothing until then.
class WebKitClosing {
 public:
  // Borrowed; must outlive this object.
  explicit WebKitClosing(WebKitWebView* view) : view_(view) {}

  // See WebView::tryClose.
  async::Task<std::optional<LeaveReply>> ask(async::Duration deadline);

  // What the engine tells. True when it belongs to a question of ours.
  bool takeClose() const { return underWay_ > 0; }
  // The page wants to be asked about. A reply that is none of ours stays with the caller.
  bool takeQuestion(LeaveReply& reply);

 private:
  using Objection = std::optional<LeaveReply>;

  async::Task<Objection> pageAnswer();
  async::Task<void> waitForPage();
  void settle(Objection objection);
  LeaveReply watched(LeaveReply reply);

  WebKitWebView* view_;
  int underWay_ = 0; // questions that the page has not come past
  std::optional<async::Resolver<Objection>> asker_;
  std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
  async::Scope scope_;
};

} // namespace ondrel::platform::webkit
