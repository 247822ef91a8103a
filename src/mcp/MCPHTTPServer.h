#pragma once

#include "async/Scope.h"
#include "base/Log.h"
#include "mcp/HTTPResponse.h"
#include "mcp/MCPServer.h"
#include "mcp/OpenConnections.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <string>

namespace ondrel::platform {
class TcpConnection;
class TcpListener;
} // namespace ondrel::platform

namespace ondrel::mcp {

// A small HTTP/1.1 server for one thing: JSON-RPC posted to /mcp by a program of this machine. One request a
// connection. It listens on all interfaces and turns away each peer that isn't a program of
// the same user on this machine. A peer may be as
// slow as it likes; how many connections there are, and how much each can hold, is limited instead.
class MCPHTTPServer final : public MCPServer {
 public:
  static constexpr std::size_t mostWaiting = 512; // for the peer: silent, reading slowly, lingering
  static constexpr std::size_t mostWorking = 128; // for the RPC layer
  // Bytes of answers that their peers have not read, in all connections together; a single one may be larger.
  static constexpr std::size_t mostUnread = std::size_t{64} << 20;
  // Reading ends here, and what came by then is the request.
  static constexpr std::size_t readLimit = 131072;
  // How long an answered peer may take to end its side. A connection that is closed over bytes that nobody
  // has read takes the answer with it.
  static constexpr std::chrono::seconds lingerTime{2};

  MCPHTTPServer(std::unique_ptr<platform::TcpListener> listener, RPCHandler handleRPC);
  ~MCPHTTPServer() override;

  std::expected<void, std::string> start(std::uint16_t port) override;
  async::Task<void> stop() override;
  async::Task<void> drained() override { return connections_.drained(); }

 private:
  async::Task<void> run(std::uint16_t port);
  bool isSameUser(const platform::TcpConnection& connection);
  async::Task<std::string> answerTo(std::string request);
  async::Task<HTTPResponse> answerToRPC(std::string body);
  async::Task<void> serve(OpenConnections::Place place, std::unique_ptr<platform::TcpConnection> connection);

  base::Logger logger_{"network"};
  std::unique_ptr<platform::TcpListener> listener_;
  RPCHandler handleRPC_;
  bool toldOfUnknownPeers_ = false;
  OpenConnections connections_{mostWaiting, mostWorking, mostUnread};
  async::TaskHandle accepting_;
  async::Scope scope_;
};

} // namespace ondrel::mcp
