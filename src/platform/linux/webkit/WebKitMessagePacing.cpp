#include "platform/linux/webkit/WebKitMessagePacing.h"

#include "platform/linux/webkit/WebKitMessages.h"

#include <gdk/gdk.h>

#include <string_view>

namespace ondrel::platform::webkit {

namespace {

using namespace std::chrono_literals;

// Redraws that take longer than a frame follow one another without end.
constexpr auto longestPause = 100ms;
constexpr int belowRedraws = GDK_PRIORITY_REDRAW + 10;

} // namespace

bool isQuestionToGoOn(WebKitUserMessage* message) {
  return std::string_view(webkit_user_message_get_name(message)) == webkit::mayGoOn;
}

WebKitMessagePacing::~WebKitMessagePacing() {
  answer();
}

void WebKitMessagePacing::answerWithTime(WebKitUserMessage* question) {
  question_ = glib::share(question);
  if (afterRedraws_ != 0)
    return;
  afterRedraws_ = g_idle_add_full(
      belowRedraws,
      [](gpointer self) {
        static_cast<WebKitMessagePacing*>(self)->answer();
        return G_SOURCE_REMOVE;
      },
      this, nullptr);
  atLast_ = async::Timer(longestPause, [this] { answer(); });
}

void WebKitMessagePacing::answer() {
  if (afterRedraws_ != 0)
    g_source_remove(std::exchange(afterRedraws_, 0));
  atLast_ = {};
  question_ = nullptr;
}

} // namespace ondrel::platform::webkit
