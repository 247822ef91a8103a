#pragma once

#include "demo/GLibPointers.h"

#include <gio/gio.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace ondrel::demo {

// A bare connection to a server that runs on this thread's main loop: sees bytes as they come.
class LineClient {
 public:
  LineClient(std::uint16_t port, const std::string& request) {
    const ObjectPtr<GSocketClient> client(g_socket_client_new());
    GError* raw = nullptr;
    connection_.reset(g_socket_client_connect_to_host(client.get(), "127.0.0.1", port, nullptr, &raw));
    if (const ErrorPtr error(raw); error)
      throw std::runtime_error(error->message);
    g_socket_set_blocking(socket(), FALSE);
    g_socket_send(socket(), request.data(), request.size(), nullptr, nullptr);
  }

  // Runs the main loop until the text has come or the connection has ended. Takes what it has looked
  // through away: the result is all up to and with that text, or what was left.
  std::string until(const std::string& text) {
    while (received_.find(text) == std::string::npos && !isEnded_)
      step();
    const auto at = received_.find(text);
    const auto taken = received_.substr(0, at == std::string::npos ? at : at + text.size());
    received_.erase(0, taken.size());
    return taken;
  }
  // Whether the connection ends before anything else comes.
  bool ends() {
    while (received_.empty() && !isEnded_)
      step();
    return received_.empty();
  }
  // Whether something has come that `until` hasn't taken, or comes with what the main loop has to do now.
  bool hasMore() {
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    receive();
    return !received_.empty() || isEnded_;
  }
  bool wasReset() const { return wasReset_; }
  void close() { g_io_stream_close(G_IO_STREAM(connection_.get()), nullptr, nullptr); }

 private:
  GSocket* socket() { return g_socket_connection_get_socket(connection_.get()); }
  void step() {
    g_main_context_iteration(nullptr, FALSE);
    receive();
  }
  void receive() {
    char bytes[65536];
    GError* raw = nullptr;
    const auto count = g_socket_receive(socket(), bytes, sizeof bytes, nullptr, &raw);
    const ErrorPtr error(raw);
    if (count > 0) {
      received_.append(bytes, static_cast<std::size_t>(count));
    } else if (!error || !g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK)) {
      isEnded_ = true;
      wasReset_ = error != nullptr;
    }
  }

  ObjectPtr<GSocketConnection> connection_;
  std::string received_;
  bool isEnded_ = false;
  bool wasReset_ = false;
};

} // namespace ondrel::demo
