#pragma once

#include "platform/linux/glib/Ref.h"

#include <libsoup/soup.h>

#include <functional>
#include <string_view>

namespace ondrel::demo::http {

// An answer that goes on: what is sent goes out at once, and as it is. Ends when it dies.
class Stream {
 public:
  // `gone` is called when the client has ended the connection; the stream may be destroyed in it.
  Stream(SoupServerMessage* message, const char* contentType, std::function<void()> gone);
  ~Stream();
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  void send(std::string_view text);

 private:
  glib::Ref<SoupServerMessage> message_;
  std::function<void()> gone_;
  GSource* watch_;
};

// Whether the client has ended its side of the connection.
bool clientHasGone(SoupServerMessage* message);

} // namespace ondrel::demo::http
