#pragma once

#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace ondrel::mcp {

// A peer of a server of the same thread: never blocks, and knows nothing of HTTP.
class SocketClient {
 public:
  // An address of this machine as text, IPv4 or IPv6, for both ends.
  SocketClient(const std::string& address, std::uint16_t port) {
    const auto from = glib::adopt(g_inet_socket_address_new_from_string(address.c_str(), 0));
    const auto to = glib::adopt(g_inet_socket_address_new_from_string(address.c_str(), port));
    socket_ = glib::adopt(g_socket_new(g_socket_address_get_family(to.get()), G_SOCKET_TYPE_STREAM,
                                       G_SOCKET_PROTOCOL_TCP, nullptr));
    // Over loopback, the kernel completes this without the server's doing.
    connected_ = g_socket_bind(socket_.get(), from.get(), FALSE, nullptr) &&
                 g_socket_connect(socket_.get(), to.get(), nullptr, nullptr);
    g_socket_set_blocking(socket_.get(), FALSE);
  }

  bool connected() const { return connected_; }
  // As if a process of that user had made it; only root may.
  bool giveTo(uid_t user) const {
    return fchown(g_socket_get_fd(socket_.get()), user, static_cast<gid_t>(-1)) == 0;
  }
  // How many bytes the system took.
  std::size_t send(std::string_view bytes) const {
    const auto sent = g_socket_send(socket_.get(), bytes.data(), bytes.size(), nullptr, nullptr);
    return static_cast<std::size_t>(std::max(sent, gssize{0}));
  }
  void endSending() const { g_socket_shutdown(socket_.get(), FALSE, TRUE, nullptr); }
  // Instead of an orderly end.
  void reset() {
    const linger now{1, 0};
    setsockopt(g_socket_get_fd(socket_.get()), SOL_SOCKET, SO_LINGER, &now, sizeof now);
    socket_ = nullptr;
  }
  // Takes in what has come, at most so many bytes.
  void receive(std::size_t most = std::string::npos) {
    std::array<char, 65536> bytes{};
    while (!ended_ && most > 0 && g_socket_condition_check(socket_.get(), G_IO_IN) != 0) {
      const auto got =
          g_socket_receive(socket_.get(), bytes.data(), std::min(bytes.size(), most), nullptr, nullptr);
      ended_ = got <= 0;
      const auto size = static_cast<std::size_t>(std::max(got, gssize{0}));
      received_.append(got < 0 ? " (broken)" : std::string_view(bytes.data(), size));
      most -= size;
    }
  }
  // With " (broken)" at the end when the server has broken the connection.
  const std::string& received() const { return received_; }
  bool ended() const { return ended_; }

 private:
  glib::Ref<GSocket> socket_;
  bool connected_ = false;
  bool ended_ = false;
  std::string received_;
};

} // namespace ondrel::mcp
