#include "platform/linux/network/GioTcpConnection.h"

#include "platform/linux/network/SocketPeer.h"
#include "platform/linux/network/SocketPoller.h"

#include <sys/epoll.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace ondrel::platform::network {

namespace {

// What is given to the system at once: the copying of a long answer must not hold up the main loop.
constexpr std::size_t largestPiece = std::size_t{256} << 10;

// Nothing when there is nothing yet; empty at the end and when the connection is broken.
std::optional<std::string> readNow(GSocket* socket) {
  std::array<char, TcpConnection::largestChunk> bytes; // NOLINT(cppcoreguidelines-pro-type-member-init)
  glib::Error error;
  const auto got = g_socket_receive(socket, bytes.data(), bytes.size(), nullptr, error.out());
  if (got >= 0)
    return std::string(bytes.data(), static_cast<std::size_t>(got));
  return error.matches(G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK) ? std::nullopt : std::optional<std::string>("");
}

// How many bytes were taken; nothing when the connection is broken.
std::optional<std::size_t> writeNow(GSocket* socket, std::string_view bytes) {
  glib::Error error;
  const auto size = std::min(bytes.size(), largestPiece);
  const auto sent = g_socket_send(socket, bytes.data(), size, nullptr, error.out());
  if (sent >= 0)
    return static_cast<std::size_t>(sent);
  return error.matches(G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK) ? std::optional<std::size_t>(0) : std::nullopt;
}

// The tasks take no `this`: the connection may go while they wait.

// Always waits first: a peer that never stops sending gets no more than its share of the main loop.
async::Task<std::string> receiveFrom(glib::Ref<GSocket> socket, std::shared_ptr<SocketPoller> poller) {
  while (true) {
    const bool ready = co_await poller->ready(g_socket_get_fd(socket.get()), EPOLLIN);
    if (!ready)
      co_return "";
    if (auto bytes = readNow(socket.get()))
      co_return std::move(*bytes);
  }
}

async::Task<bool> sendTo(glib::Ref<GSocket> socket, std::shared_ptr<SocketPoller> poller, std::string bytes) {
  std::string_view rest = bytes;
  while (true) {
    const auto taken = writeNow(socket.get(), rest);
    if (!taken)
      co_return false;
    rest.remove_prefix(*taken);
    if (rest.empty())
      co_return true;
    const bool ready = co_await poller->ready(g_socket_get_fd(socket.get()), EPOLLOUT);
    if (!ready)
      co_return false;
  }
}

async::Task<bool> endOf(glib::Ref<GSocket> socket, std::shared_ptr<SocketPoller> poller) {
  const bool ended = co_await poller->ready(g_socket_get_fd(socket.get()), EPOLLRDHUP);
  co_return ended;
}

} // namespace

GioTcpConnection::GioTcpConnection(glib::Ref<GSocket> socket, std::shared_ptr<SocketPoller> poller,
                                   std::string peerHost)
    : socket_(std::move(socket)), poller_(std::move(poller)), peerHost_(std::move(peerHost)) {
  g_socket_set_blocking(socket_.get(), FALSE);
}

TcpConnection::Peer GioTcpConnection::peer() const {
  return peerOfSocket(g_socket_get_fd(socket_.get()));
}

async::Task<std::string> GioTcpConnection::receive() {
  return receiveFrom(socket_, poller_);
}

async::Task<bool> GioTcpConnection::send(std::string bytes) {
  return sendTo(socket_, poller_, std::move(bytes));
}

async::Task<bool> GioTcpConnection::peerEnds() {
  return endOf(socket_, poller_);
}

void GioTcpConnection::endSending() {
  g_socket_shutdown(socket_.get(), FALSE, TRUE, nullptr);
}

} // namespace ondrel::platform::network
