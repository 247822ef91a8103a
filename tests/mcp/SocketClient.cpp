#include "SocketClient.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace ondrel::mcp {

namespace {

struct Address {
  sockaddr_storage storage{};
  socklen_t size = 0;
  sockaddr* raw() { return reinterpret_cast<sockaddr*>(&storage); }
};

Address addressOf(const std::string& text, int port) {
  Address address;
  if (auto* v4 = reinterpret_cast<sockaddr_in*>(&address.storage);
      inet_pton(AF_INET, text.c_str(), &v4->sin_addr) == 1) {
    v4->sin_family = AF_INET;
    v4->sin_port = htons(static_cast<std::uint16_t>(port));
    address.size = sizeof *v4;
  } else if (auto* v6 = reinterpret_cast<sockaddr_in6*>(&address.storage);
             inet_pton(AF_INET6, text.c_str(), &v6->sin6_addr) == 1) {
    v6->sin6_family = AF_INET6;
    v6->sin6_port = htons(static_cast<std::uint16_t>(port));
    address.size = sizeof *v6;
  }
  return address;
}

} // namespace

SocketClient::SocketClient(const std::string& address, int port) {
  auto to = addressOf(address, port);
  fd_ = socket(to.storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
  // Over loopback, the kernel completes this without the server's doing.
  connected_ = connect(fd_, to.raw(), to.size) == 0;
  fcntl(fd_, F_SETFL, O_NONBLOCK);
}

SocketClient::SocketClient(SocketClient&& other) noexcept
    : fd_(std::exchange(other.fd_, -1)), connected_(other.connected_), ended_(other.ended_),
      broken_(other.broken_), received_(std::move(other.received_)) {
}

std::size_t SocketClient::send(std::string_view bytes) const {
  const auto sent = ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
  return sent < 0 ? 0 : static_cast<std::size_t>(sent);
}

void SocketClient::endSending() const {
  shutdown(fd_, SHUT_WR);
}

void SocketClient::close() {
  if (fd_ >= 0)
    ::close(std::exchange(fd_, -1));
}

void SocketClient::reset() {
  const linger now{1, 0};
  setsockopt(fd_, SOL_SOCKET, SO_LINGER, &now, sizeof now);
  close();
}

void SocketClient::receive(std::size_t most) {
  std::array<char, 65536> bytes{};
  while (!ended_ && most > 0) {
    const auto got = recv(fd_, bytes.data(), std::min(bytes.size(), most), 0);
    if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
      return;
    ended_ = got <= 0;
    broken_ = got < 0;
    if (got > 0) {
      received_.append(bytes.data(), static_cast<std::size_t>(got));
      most -= static_cast<std::size_t>(got);
    }
  }
}

int freePort() {
  const int fd = socket(AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0);
  auto any = addressOf("::", 0);
  int port = 0;
  if (bind(fd, any.raw(), any.size) == 0 && getsockname(fd, any.raw(), &any.size) == 0)
    port = ntohs(reinterpret_cast<sockaddr_in6*>(&any.storage)->sin6_port);
  close(fd);
  return port;
}

std::string ownAddress() {
  ifaddrs* all = nullptr;
  std::string found;
  if (getifaddrs(&all) != 0)
    return found;
  for (const auto* each = all; each && found.empty(); each = each->ifa_next) {
    if (!each->ifa_addr || each->ifa_addr->sa_family != AF_INET || (each->ifa_flags & IFF_LOOPBACK))
      continue;
    std::array<char, INET_ADDRSTRLEN> text{};
    const auto* address = reinterpret_cast<const sockaddr_in*>(each->ifa_addr);
    found = inet_ntop(AF_INET, &address->sin_addr, text.data(), text.size());
  }
  freeifaddrs(all);
  return found;
}

} // namespace ondrel::mcp
