#include "webext/MessageFlow.h"

#include "platform/linux/webkit/WebKitMessages.h"

#include <utility>

namespace ondrel::webext {

namespace messages = platform::webkit;

namespace {
// Some hundred small messages: a few milliseconds of the program.
constexpr std::size_t weightAtOnce = std::size_t{128} << 10;
} // namespace

MessageFlow::MessageFlow(WebKitWebProcessExtension* extension, WebKitWebPage* page)
    : extension_(extension), page_(page), pageId_(webkit_web_page_get_id(page)) {
}

bool MessageFlow::isOpen() const {
  return webkit_web_process_extension_get_page(extension_, pageId_) == page_;
}

bool MessageFlow::post(std::uint64_t frame, GVariant* message) {
  MessageQueue::Message owned(g_variant_ref_sink(message));
  if (!isWaiting_) {
    send(std::move(owned));
    return true;
  }
  const bool isHeld = held_.add(frame, std::move(owned));
  if (!isHeld && !std::exchange(toldOfDrop_, true))
    note(messages::messagesDropped, nullptr);
  return isHeld;
}

void MessageFlow::documentBegan(std::uint64_t frame, bool isMainFrame) {
  if (isMainFrame)
    held_.dropAll();
  else
    held_.drop(frame);
}

void MessageFlow::note(const char* name, GVariant* parameters) {
  // A floating message is consumed by the call.
  webkit_web_page_send_message_to_view(page_, webkit_user_message_new(name, parameters), nullptr, nullptr,
                                       nullptr);
}

void MessageFlow::send(MessageQueue::Message message) {
  sent_ += weightOf(message.get());
  note(messages::scriptMessage, message.get());
  if (sent_ >= weightAtOnce)
    askToGoOn();
}

void MessageFlow::askToGoOn() {
  isWaiting_ = true;
  webkit_web_page_send_message_to_view(
      page_, webkit_user_message_new(messages::mayGoOn, nullptr), nullptr,
      [](GObject* page, GAsyncResult* result, gpointer data) {
        // Any answer will do: an error means that nobody is there who would give another one.
        const auto answer =
            glib::adopt(webkit_web_page_send_message_to_view_finish(WEBKIT_WEB_PAGE(page), result, nullptr));
        static_cast<MessageFlow*>(data)->goOn();
      },
      this);
}

void MessageFlow::goOn() {
  isWaiting_ = false;
  sent_ = 0;
  if (!isOpen())
    held_.dropAll();
  while (!isWaiting_ && !held_.isEmpty())
    send(held_.next());
}

} // namespace ondrel::webext
