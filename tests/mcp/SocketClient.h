#pragma once

#include <string>
#include <string_view>

namespace ondrel::mcp {

// A peer of a server of the same thread: never blocks, and knows nothing of HTTP.
class SocketClient {
 public:
  // An address as text, IPv4 or IPv6.
  SocketClient(const std::string& address, int port);
  SocketClient(SocketClient&& other) noexcept;
  SocketClient& operator=(SocketClient&&) = delete;
  ~SocketClient() { close(); }

  bool connected() const { return connected_; }
  // How many bytes the system took.
  std::size_t send(std::string_view bytes) const;
  void endSending() const;
  void close();
  void reset(); // instead of an orderly end
  // Takes in what has come, at most so many bytes.
  void receive(std::size_t most = std::string::npos);
  const std::string& received() const { return received_; }
  // The server has ended its side, or broken the connection.
  bool ended() const { return ended_; }
  bool broken() const { return broken_; }

 private:
  int fd_;
  bool connected_ = false;
  bool ended_ = false;
  bool broken_ = false;
  std::string received_;
};

// A port of this machine at which nobody listens.
int freePort();
// An address of this machine that is not loopback; empty when it has none.
std::string ownAddress();

} // namespace ondrel::mcp
