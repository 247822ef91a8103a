#include "demo/http/Stream.h"

#include <sys/socket.h>

#include <cerrno>

namespace ondrel::demo::http {

Stream::Stream(SoupServerMessage* message, const char* contentType, std::function<void()> gone)
    : message_(glib::share(message)), gone_(std::move(gone)),
      watch_(g_socket_create_source(soup_server_message_get_socket(message), G_IO_IN, nullptr)) {
  auto* headers = soup_server_message_get_response_headers(message);
  soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
  soup_message_headers_replace(headers, "Content-Type", contentType);
  soup_message_headers_replace(headers, "Cache-Control", "no-store");
  soup_message_headers_replace(headers, "Connection", "close");
  soup_message_headers_set_encoding(headers, SOUP_ENCODING_EOF);
  soup_message_body_set_accumulate(soup_server_message_get_response_body(message), FALSE);
  const GSocketSourceFunc callback = [](GSocket*, GIOCondition, gpointer self) -> gboolean {
    auto* stream = static_cast<Stream*>(self);
    const auto gone = stream->gone_;
    if (clientHasGone(stream->message_.get()))
      gone();
    return G_SOURCE_CONTINUE; // a source that was destroyed meanwhile doesn't come again
  };
  g_source_set_callback(watch_, G_SOURCE_FUNC(callback), this, nullptr);
  g_source_attach(watch_, nullptr);
}

Stream::~Stream() {
  g_source_destroy(watch_);
  g_source_unref(watch_);
  soup_message_body_complete(soup_server_message_get_response_body(message_.get()));
  soup_server_message_unpause(message_.get());
}

void Stream::send(std::string_view text) {
  soup_message_body_append(soup_server_message_get_response_body(message_.get()), SOUP_MEMORY_COPY,
                           text.data(), text.size());
  soup_server_message_unpause(message_.get());
}

bool clientHasGone(SoupServerMessage* message) {
  GSocket* socket = soup_server_message_get_socket(message);
  char next = 0;
  const auto got = socket ? recv(g_socket_get_fd(socket), &next, 1, MSG_PEEK | MSG_DONTWAIT) : 0;
  return got == 0 || (got < 0 && errno != EAGAIN);
}

} // namespace ondrel::demo::http
