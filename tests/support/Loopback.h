#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <string>

namespace ondrel::support {

inline sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

// All that a server of this machine answers to these bytes until it ends the connection; blocks.
inline std::string answerAt(int port, const std::string& bytes) {
  const int connection = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const auto server = loopback(port);
  std::string answer;
  if (connect(connection, reinterpret_cast<const sockaddr*>(&server), sizeof server) == 0 &&
      write(connection, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size())) {
    std::array<char, 4096> part{};
    for (ssize_t length = 0; (length = read(connection, part.data(), part.size())) > 0;)
      answer.append(part.data(), static_cast<std::size_t>(length));
  }
  close(connection);
  return answer;
}

// A port at which nobody listens.
inline std::uint16_t freePort() {
  const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  auto address = loopback(0);
  socklen_t size = sizeof address;
  std::uint16_t port = 0;
  if (bind(fd, reinterpret_cast<const sockaddr*>(&address), size) == 0 &&
      getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) == 0)
    port = ntohs(address.sin_port);
  close(fd);
  return port;
}

} // namespace ondrel::support
