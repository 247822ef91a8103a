#pragma once

#include "async/Timer.h"
#include "platform/linux/glib/Ref.h"

#include <webkit/webkit.h>

namespace ondrel::platform::webkit {

// Whether the extension asks, after some script messages, if it may send more of them.
bool isQuestionToGoOn(WebKitUserMessage* message);

// Lets a page that floods send on only after the redraws that are due. One for each web view.
class WebKitMessagePacing {
 public:
  WebKitMessagePacing() = default;
  ~WebKitMessagePacing();
  WebKitMessagePacing(const WebKitMessagePacing&) = delete;
  WebKitMessagePacing& operator=(const WebKitMessagePacing&) = delete;

  // A question that is still open is answered by the next one, and by the end of this object.
  void answerWithTime(WebKitUserMessage* question);

 private:
  void answer();

  glib::Ref<WebKitUserMessage> question_; // letting go of it answers it
  guint afterRedraws_ = 0;
  async::Timer atLast_;
};

} // namespace ondrel::platform::webkit
