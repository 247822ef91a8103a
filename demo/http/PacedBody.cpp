#include "demo/http/PacedBody.h"

#include "async/Timer.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"

#include <algorithm>
#include <vector>

namespace ondrel::demo::http {

namespace {

// Lives until the message has finished.
class Sender {
 public:
  Sender(SoupServerMessage* message, PacedBody body)
      : message_(glib::share(message)), body_(std::move(body)) {
    for (const auto* signal : {"wrote-headers", "wrote-chunk"})
      connections_.push_back(
          glib::connect<void(SoupServerMessage*)>(message, signal, [this](SoupServerMessage*) { wait(); }));
    connections_.push_back(glib::connect<void(SoupServerMessage*)>(
        message, "finished", [this](SoupServerMessage*) { delete this; }));
  }

 private:
  void wait() {
    if (body_.pause.count() > 0)
      pause_ = async::Timer(body_.pause, [this] { send(); });
    else
      send();
  }
  void send() {
    auto* body = soup_server_message_get_response_body(message_.get());
    const auto length = std::min(body_.piece, body_.size - sent_);
    if (length > 0) {
      const auto bytes = body_.bytes(sent_, length);
      soup_message_body_append(body, SOUP_MEMORY_COPY, bytes.data(), bytes.size());
      sent_ += length;
    } else {
      soup_message_body_complete(body);
    }
    soup_server_message_unpause(message_.get());
  }

  glib::Ref<SoupServerMessage> message_;
  PacedBody body_;
  std::size_t sent_ = 0;
  async::Timer pause_;
  std::vector<glib::Connection> connections_;
};

} // namespace

void sendPaced(SoupServerMessage* message, const char* contentType, PacedBody body) {
  auto* headers = soup_server_message_get_response_headers(message);
  soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
  soup_message_headers_replace(headers, "Content-Type", contentType);
  soup_message_headers_set_content_length(headers, static_cast<goffset>(body.size));
  soup_message_body_set_accumulate(soup_server_message_get_response_body(message), FALSE);
  new Sender(message, std::move(body));
}

} // namespace ondrel::demo::http
