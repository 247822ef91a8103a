#include "demo/TakenConnection.h"

#include <sys/socket.h>

namespace ondrel::demo {

namespace {

void forget(GSource*& source) {
  if (source) {
    g_source_destroy(source);
    g_source_unref(source);
    source = nullptr;
  }
}

GSource* watch(GSocket* socket, GIOCondition condition, GSocketSourceFunc callback, gpointer self) {
  GSource* source = g_socket_create_source(socket, condition, nullptr);
  g_source_set_callback(source, G_SOURCE_FUNC(callback), self, nullptr);
  g_source_attach(source, g_main_context_get_thread_default());
  return source;
}

} // namespace

TakenConnection::TakenConnection(SoupServerMessage* message)
    : socket_(share(soup_server_message_get_socket(message))),
      stream_(soup_server_message_steal_connection(message)) {
  g_socket_set_blocking(socket_.get(), FALSE);
  reader_ = watch(
      socket_.get(), GIOCondition(G_IO_IN | G_IO_HUP | G_IO_ERR),
      [](GSocket*, GIOCondition, gpointer self) { return static_cast<TakenConnection*>(self)->readable(); },
      this);
}

TakenConnection::~TakenConnection() {
  forget(reader_);
  forget(writer_);
  g_socket_close(socket_.get(), nullptr);
}

void TakenConnection::send(std::string_view bytes) {
  unsent_ += bytes;
  write();
}

void TakenConnection::finish() {
  isFinishing_ = true;
  write();
}

void TakenConnection::resetAtEnd() {
  const linger now{1, 0};
  setsockopt(g_socket_get_fd(socket_.get()), SOL_SOCKET, SO_LINGER, &now, sizeof now);
}

void TakenConnection::write() {
  std::size_t sent = 0;
  while (sent < unsent_.size()) {
    GError* raw = nullptr;
    const auto count =
        g_socket_send(socket_.get(), unsent_.data() + sent, unsent_.size() - sent, nullptr, &raw);
    const ErrorPtr error(raw);
    if (count > 0)
      sent += static_cast<std::size_t>(count);
    else if (error && g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK))
      break;
    else
      return; // the reader sees the end as well
  }
  unsent_.erase(0, sent);
  watchWritable(!unsent_.empty() || isFinishing_);
}

void TakenConnection::watchWritable(bool isWanted) {
  if (!isWanted) {
    forget(writer_);
  } else if (!writer_) {
    writer_ = watch(
        socket_.get(), G_IO_OUT,
        [](GSocket*, GIOCondition, gpointer data) -> gboolean {
          auto* self = static_cast<TakenConnection*>(data);
          if (self->unsent_.empty() && self->isFinishing_)
            self->close();
          else
            self->write();
          return G_SOURCE_CONTINUE; // a source that was destroyed meanwhile doesn't come again
        },
        this);
  }
}

gboolean TakenConnection::readable() {
  char bytes[512];
  GError* raw = nullptr;
  const auto count = g_socket_receive(socket_.get(), bytes, sizeof bytes, nullptr, &raw);
  const ErrorPtr error(raw);
  if (count > 0 || (error && g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK)))
    return G_SOURCE_CONTINUE; // what a client says after its request is of no interest
  close();
  return G_SOURCE_REMOVE;
}

void TakenConnection::close() {
  forget(reader_);
  forget(writer_);
  g_socket_close(socket_.get(), nullptr);
  if (const auto closed = std::move(closed_))
    closed();
}

} // namespace ondrel::demo
