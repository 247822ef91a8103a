#pragma once

#include "webext/MessageQueue.h"

#include <webkit/webkit-web-process-extension.h>

namespace ondrel::webext {

// Sends a page's script messages to the program no faster than it has time for them: after a certain weight
// it asks whether it may go on, and holds what comes until the answer. Lives as long as the page's object,
// which an open question keeps alive beyond the page itself.
class MessageFlow {
 public:
  MessageFlow(WebKitWebProcessExtension* extension, WebKitWebPage* page);
  MessageFlow(const MessageFlow&) = delete;
  MessageFlow& operator=(const MessageFlow&) = delete;

  // In its turn; a floating message is consumed. False for one that finds no room and is dropped, which the
  // program is told of once.
  bool post(std::uint64_t frame, GVariant* message);
  // A new document has begun in the frame: what the former one has not got out by now is dropped, as if it
  // had ended earlier; in the main frame, that of all frames.
  void documentBegan(std::uint64_t frame, bool isMainFrame);
  // At once, beside the flow.
  void note(const char* name, GVariant* parameters);

  // Whether the page is still there. Its object must not be used when it isn't.
  bool isOpen() const;

 private:
  void send(MessageQueue::Message message);
  void askToGoOn();
  void goOn();

  WebKitWebProcessExtension* extension_;
  WebKitWebPage* page_;
  std::uint64_t pageId_;
  MessageQueue held_;
  std::size_t sent_ = 0; // weight since the last answer
  bool isWaiting_ = false;
  bool toldOfDrop_ = false;
};

} // namespace ondrel::webext
