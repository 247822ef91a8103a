#include "platform/linux/webkit/WebKitFinder.h"

#include "platform/linux/text/SafeText.h"

#include <algorithm>

namespace ondrel::platform::webkit {

namespace {

constexpr guint32 options = WEBKIT_FIND_OPTIONS_CASE_INSENSITIVE | WEBKIT_FIND_OPTIONS_WRAP_AROUND;

} // namespace

// The engine answers each request once, in their order, also when the process has ended (measured, 2.50). Its
// answers don't say what they answer.
WebKitFinder::WebKitFinder(WebKitWebView* view)
    : controller_(glib::share(webkit_web_view_get_find_controller(view))) {
  connections_.push_back(glib::connect<void(WebKitFindController*, guint)>(
      controller_.get(), "found-text", [this](WebKitFindController*, guint matches) { answered(matches); }));
  connections_.push_back(glib::connect<void(WebKitFindController*)>(
      controller_.get(), "failed-to-find-text", [this](WebKitFindController*) { answered(0); }));
}

void WebKitFinder::find(const std::string& text) {
  unanswered_.push(Request::search);
  webkit_find_controller_search(controller_.get(), text::validUtf8(text).c_str(), options, mostCounted);
}

void WebKitFinder::findNext() {
  unanswered_.push(Request::step);
  webkit_find_controller_search_next(controller_.get());
}

void WebKitFinder::findPrevious() {
  unanswered_.push(Request::step);
  webkit_find_controller_search_previous(controller_.get());
}

void WebKitFinder::finish() {
  webkit_find_controller_search_finish(controller_.get());
}

// To a step the engine says that there is one match, if any; to have it count anew takes the marks away.
void WebKitFinder::answered(unsigned matches) {
  if (unanswered_.empty())
    return;
  const bool isCount = unanswered_.front() == Request::search || matches == 0;
  unanswered_.pop();
  if (isCount)
    matches_ = std::min(matches, mostCounted + 1);
  if (unanswered_.empty())
    found.emit(matches_);
}

} // namespace ondrel::platform::webkit
