#include "platform/linux/network/GioTcpListener.h"

#include "async/sleep.h"
#include "base/Log.h"
#include "base/Translation.h"
#include "platform/linux/network/GioTcpConnection.h"
#include "platform/linux/network/SocketPoller.h"

#include <netinet/in.h>
#include <sys/epoll.h>
#include <sys/resource.h>

#include <algorithm>
#include <optional>
#include <utility>

namespace ondrel::platform::network {

namespace {

constexpr int waitingConnections = 512;
constexpr std::chrono::milliseconds pauseAfterFailure{200};
constexpr base::Logger logger{"network"};

// A process begins with a soft limit of 1024. Connections come on top of what the program itself has open,
// and GLib ends a process that has no descriptor left for it.
void raiseDescriptorLimit() {
  constexpr rlim_t enough = 4096;
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= enough)
    return;
  limit.rlim_cur = std::min(enough, limit.rlim_max);
  setrlimit(RLIMIT_NOFILE, &limit);
}

glib::Ref<GSocket> listeningSocket(GSocketFamily family, std::uint16_t port, glib::Error& error) {
  auto socket = glib::adopt(g_socket_new(family, G_SOCKET_TYPE_STREAM, G_SOCKET_PROTOCOL_TCP, error.out()));
  if (!socket)
    return nullptr;
  g_socket_set_blocking(socket.get(), FALSE);
  g_socket_set_listen_backlog(socket.get(), waitingConnections);
  if (family == G_SOCKET_FAMILY_IPV6 &&
      !g_socket_set_option(socket.get(), IPPROTO_IPV6, IPV6_V6ONLY, 0, error.out()))
    return nullptr;
  const auto any = glib::adopt(g_inet_address_new_any(family));
  const auto address = glib::adopt(g_inet_socket_address_new(any.get(), port));
  // With reuse: connections that wait for their last packets don't keep the port. Another listener does.
  if (!g_socket_bind(socket.get(), address.get(), TRUE, error.out()) ||
      !g_socket_listen(socket.get(), error.out()))
    return nullptr;
  return socket;
}

// Nothing when the peer has broken the connection already: then nobody can tell any more who it was.
std::optional<std::string> peerOf(GSocket* socket) {
  const auto address = glib::adopt(g_socket_get_remote_address(socket, nullptr));
  if (!address || !G_IS_INET_SOCKET_ADDRESS(address.get()))
    return std::nullopt;
  // GIO gives an IPv4 peer of an IPv6 socket as IPv4.
  auto* host = g_inet_socket_address_get_address(G_INET_SOCKET_ADDRESS(address.get()));
  return glib::CString(g_inet_address_to_string(host)).get();
}

async::Task<std::unique_ptr<TcpConnection>> acceptFrom(glib::Ref<GSocket> socket,
                                                       std::shared_ptr<SocketPoller> poller) {
  bool told = false;
  while (socket) {
    const bool ready = co_await poller->ready(g_socket_get_fd(socket.get()), EPOLLIN);
    if (!ready || g_socket_is_closed(socket.get()))
      break;
    glib::Error error;
    auto accepted = glib::adopt(g_socket_accept(socket.get(), nullptr, error.out()));
    if (accepted) {
      if (auto host = peerOf(accepted.get()))
        co_return std::make_unique<GioTcpConnection>(std::move(accepted), poller, std::move(*host));
      continue;
    }
    if (error.matches(G_IO_ERROR, G_IO_ERROR_WOULD_BLOCK))
      continue;
    // Too many open files, say. The connection still waits, so that asking again at once would never end.
    if (!std::exchange(told, true))
      logger.error("A connection could not be accepted: {}", error.message());
    const bool slept = co_await async::sleep(pauseAfterFailure);
    if (!slept || g_socket_is_closed(socket.get()))
      break;
  }
  co_return nullptr;
}

} // namespace

std::expected<void, std::string> GioTcpListener::listen(std::uint16_t port) {
  raiseDescriptorLimit();
  poller_ = SocketPoller::make();
  if (!poller_)
    return std::unexpected(base::tr("Too many open files"));
  glib::Error error;
  socket_ = listeningSocket(G_SOCKET_FAMILY_IPV6, port, error);
  if (!socket_ && !error.matches(G_IO_ERROR, G_IO_ERROR_ADDRESS_IN_USE))
    socket_ = listeningSocket(G_SOCKET_FAMILY_IPV4, port, error);
  if (!socket_)
    return std::unexpected(error.message());
  return {};
}

async::Task<std::unique_ptr<TcpConnection>> GioTcpListener::accept() {
  return acceptFrom(socket_, poller_);
}

void GioTcpListener::close() {
  if (const auto socket = std::exchange(socket_, nullptr)) {
    poller_->forget(g_socket_get_fd(socket.get()));
    g_socket_close(socket.get(), nullptr);
  }
}

} // namespace ondrel::platform::network
