#pragma once

#include "async/Task.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <string>

namespace ondrel::platform {

// A connection that another program opened. Destroying it ends it. One receive() or send() at a time; main
// thread only.
class TcpConnection {
 public:
  static constexpr std::size_t largestChunk = 8192;

  virtual ~TcpConnection() = default;
  // The peer's address: "127.0.0.1", "::1". That of an IPv4 peer is never written as one of IPv6.
  virtual const std::string& peerHost() const = 0;
  // Whose the other end is, where that is a process of this machine; `gone` when no process has it any more.
  enum class Peer { sameUser, otherUser, gone, unknown };
  virtual Peer peer() const = 0;
  // Waits, without a limit of time, for 1 to largestChunk bytes. Empty when no more will come: the peer has
  // ended its side, the connection is broken or the task is cancelled.
  virtual async::Task<std::string> receive() = 0;
  // Hands all bytes to the network. False when the connection is broken or the task is cancelled.
  virtual async::Task<bool> send(std::string bytes) = 0;
  // Waits until the peer has ended its side or the connection is broken, and reads nothing. False when the
  // task is cancelled. Not beside receive() or send().
  virtual async::Task<bool> peerEnds() = 0;
  // Tells the peer that nothing more comes; receiving goes on.
  virtual void endSending() = 0;
};

// A port to which other programs connect. Main thread only.
class TcpListener {
 public:
  virtual ~TcpListener() = default;
  // Listens on all interfaces, IPv4 and IPv6, once in the life of the object. The error is for people.
  virtual std::expected<void, std::string> listen(std::uint16_t port) = 0;
  // Waits for the next connection, whatever goes wrong with others. Null when the listener is closed or the
  // task cancelled. One at a time.
  virtual async::Task<std::unique_ptr<TcpConnection>> accept() = 0;
  // The port is free when it returns. Connections that were accepted stay.
  virtual void close() = 0;
};

} // namespace ondrel::platform
