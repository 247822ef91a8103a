#pragma once

#include "async/Signal.h"
#include "platform/TcpListener.h"

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace ondrel::support {

// The other end of a connection, played by a test.
struct FakeTcpPeer {
  void send(std::string bytes) {
    toServer.push_back(std::move(bytes));
    arrived.send();
  }
  void end() {
    ended = true;
    arrived.send();
  }

  // Its process ends, and with it both sides.
  void go() {
    peer = platform::TcpConnection::Peer::gone;
    end();
  }

  std::string host = "127.0.0.1";
  platform::TcpConnection::Peer peer = platform::TcpConnection::Peer::sameUser;
  std::deque<std::string> toServer;
  bool ended = false;
  async::Signal arrived;
  // Stops taking bytes of the answer, for good.
  bool stuck = false;
  async::Signal never;
  std::string answer;
  bool answerEnded = false;
  bool closed = false; // the server has let the connection go
};

class FakeTcpConnection final : public platform::TcpConnection {
 public:
  explicit FakeTcpConnection(std::shared_ptr<FakeTcpPeer> peer) : peer_(std::move(peer)) {}
  ~FakeTcpConnection() override { peer_->closed = true; }

  const std::string& peerHost() const override { return peer_->host; }
  Peer peer() const override { return peer_->peer; }
  async::Task<bool> peerEnds() override {
    while (!peer_->ended) {
      const bool arrived = co_await peer_->arrived.wait();
      if (!arrived)
        co_return false;
    }
    co_return true;
  }
  async::Task<std::string> receive() override {
    while (peer_->toServer.empty() && !peer_->ended) {
      const bool arrived = co_await peer_->arrived.wait();
      if (!arrived)
        co_return "";
    }
    if (peer_->toServer.empty())
      co_return "";
    auto bytes = std::move(peer_->toServer.front());
    peer_->toServer.pop_front();
    co_return bytes;
  }
  async::Task<bool> send(std::string bytes) override {
    if (peer_->stuck)
      co_return co_await peer_->never.wait();
    peer_->answer += bytes;
    co_return true;
  }
  void endSending() override { peer_->answerEnded = true; }

 private:
  std::shared_ptr<FakeTcpPeer> peer_;
};

// A port at which the connections arrive that a test makes.
class FakeTcpListener final : public platform::TcpListener {
 public:
  // What it shares with the test, which outlives it.
  struct Port {
    std::shared_ptr<FakeTcpPeer> connect(std::string host = "127.0.0.1") {
      auto peer = std::make_shared<FakeTcpPeer>();
      peer->host = std::move(host);
      waiting.push_back(peer);
      arrived.send();
      return peer;
    }

    std::optional<std::string> problem; // with listening
    std::deque<std::shared_ptr<FakeTcpPeer>> waiting;
    async::Signal arrived;
    bool closed = false;
  };

  explicit FakeTcpListener(Port& port) : port_(port) {}

  std::expected<void, std::string> listen(std::uint16_t) override {
    if (port_.problem)
      return std::unexpected(*port_.problem);
    return {};
  }
  async::Task<std::unique_ptr<platform::TcpConnection>> accept() override {
    while (port_.waiting.empty()) {
      const bool arrived = co_await port_.arrived.wait();
      if (!arrived)
        co_return nullptr;
    }
    auto peer = std::move(port_.waiting.front());
    port_.waiting.pop_front();
    co_return std::make_unique<FakeTcpConnection>(std::move(peer));
  }
  void close() override { port_.closed = true; }

 private:
  Port& port_;
};

} // namespace ondrel::support
