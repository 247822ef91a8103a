#pragma once

#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

namespace ondrel::demo {

// What came back for one request.
struct Answer {
  unsigned status = 0; // 0: the connection ended without an answer
  std::string head;
  std::string body;
};

// A request on a connection of its own, to a server that may run on this thread's main loop: sees bytes as
// they come.
class Client {
 public:
  Client(std::uint16_t port, const std::string& request) : state_(std::make_unique<State>()) {
    const auto client = glib::adopt(g_socket_client_new());
    glib::Error error;
    connection_ =
        glib::adopt(g_socket_client_connect_to_host(client.get(), "127.0.0.1", port, nullptr, error.out()));
    if (!connection_)
      throw std::runtime_error(error.message());
    auto* socket = g_socket_connection_get_socket(connection_.get());
    g_socket_send(socket, request.data(), request.size(), nullptr, nullptr);
    state_->source = g_socket_create_source(socket, G_IO_IN, nullptr);
    g_source_set_callback(state_->source, G_SOURCE_FUNC(receive), state_.get(), nullptr);
    g_source_attach(state_->source, nullptr);
  }

  // Runs the main loop until the text has come or the connection has ended. Takes what it has looked through
  // away: the result is all up to and with that text, or what was left.
  std::string until(const std::string& text) {
    auto& received = state_->received;
    while (!received.contains(text) && !state_->isEnded)
      g_main_context_iteration(nullptr, TRUE);
    const auto at = received.find(text);
    const auto taken = received.substr(0, at == std::string::npos ? at : at + text.size());
    received.erase(0, taken.size());
    return taken;
  }
  Answer answer() {
    Answer answer{0, until("\r\n\r\n"), ""};
    while (!state_->isEnded)
      g_main_context_iteration(nullptr, TRUE);
    answer.body = state_->received;
    if (answer.head.starts_with("HTTP/1."))
      answer.status = static_cast<unsigned>(std::stoi(answer.head.substr(9)));
    return answer;
  }
  // Whether something has come that `until` hasn't taken, or comes with what the main loop has to do now.
  bool hasMore() {
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    return !state_->received.empty() || state_->isEnded;
  }
  void close() {
    state_ = nullptr;
    g_io_stream_close(G_IO_STREAM(connection_.get()), nullptr, nullptr);
  }

 private:
  struct State {
    std::string received;
    bool isEnded = false;
    GSource* source = nullptr;

    State() = default;
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
      g_source_destroy(source);
      g_source_unref(source);
    }
  };

  static gboolean receive(GSocket* socket, GIOCondition, State* state) {
    char bytes[65536];
    const auto count = g_socket_receive(socket, bytes, sizeof bytes, nullptr, nullptr);
    state->isEnded = count <= 0;
    state->received.append(bytes, count > 0 ? static_cast<std::size_t>(count) : 0);
    return count > 0 ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
  }

  glib::Ref<GSocketConnection> connection_;
  std::unique_ptr<State> state_;
};

} // namespace ondrel::demo
