#include "mcp/MCPHTTPServer.h"

#include "async/Deadline.h"
#include "async/sleep.h"
#include "mcp/HTTPRequestParser.h"
#include "mcp/HTTPRouting.h"
#include "mcp/InvalidPort.h"
#include "platform/TcpListener.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

namespace ondrel::mcp {

namespace {

using Phase = OpenConnections::Phase;

constexpr std::size_t largestRequest = MCPHTTPServer::readLimit - 1 + platform::TcpConnection::largestChunk;

// A buffer grows by doubling, but never beyond what it can come to hold.
void append(std::string& buffer, const std::string& bytes) {
  if (buffer.size() + bytes.size() > buffer.capacity())
    buffer.reserve(std::clamp(2 * buffer.capacity(), buffer.size() + bytes.size(), largestRequest));
  buffer += bytes;
}

// The tasks below are awaited by one that owns the connection.

// The bytes of one request, or of what there was of it when the peer ended its side or the limit was reached.
// Empty when there is nothing to answer.
async::Task<std::string> receiveRequest(platform::TcpConnection& connection) {
  std::string buffer;
  HTTPRequestProgress progress;
  while (buffer.size() < MCPHTTPServer::readLimit) {
    const auto bytes = co_await connection.receive();
    if (bytes.empty())
      break;
    append(buffer, bytes);
    if (progress.isComplete(buffer))
      break;
  }
  const bool givenUp = co_await async::cancelled();
  co_return givenUp ? std::string() : std::move(buffer);
}

constexpr std::chrono::seconds goneCheckPause{1};

// Gives the connection up when nobody is there any more to read the answer that is being worked on. A peer
// that has only ended its side waits for it.
async::Task<void> watchPeer(platform::TcpConnection& connection, OpenConnections& connections,
                            std::uint64_t number) {
  bool goesOn = co_await connection.peerEnds();
  while (goesOn && connection.peer() != platform::TcpConnection::Peer::gone)
    goesOn = co_await async::sleep(goneCheckPause);
  if (goesOn)
    connections.giveUp(number);
}

async::Task<bool> discardRest(platform::TcpConnection& connection) {
  while (true) {
    const auto bytes = co_await connection.receive();
    if (bytes.empty())
      co_return true;
  }
}

} // namespace

MCPHTTPServer::MCPHTTPServer(std::unique_ptr<platform::TcpListener> listener, RPCHandler handleRPC)
    : listener_(std::move(listener)), handleRPC_(std::move(handleRPC)) {
}

MCPHTTPServer::~MCPHTTPServer() = default;

std::expected<void, std::string> MCPHTTPServer::start(std::uint16_t port) {
  if (port == 0)
    return std::unexpected(invalidPortText("0"));
  accepting_ = scope_.spawn(run(port));
  return {};
}

async::Task<void> MCPHTTPServer::stop() {
  accepting_.cancel();
  listener_->close();
  co_return;
}

async::Task<void> MCPHTTPServer::run(std::uint16_t port) {
  if (auto listening = listener_->listen(port); !listening) {
    logger_.error("MCP HTTP server failed: {}", listening.error());
    failure.set(std::move(listening).error());
    co_return;
  }
  logger_.info("MCP HTTP server ready on port {}", port);
  isListening.set(true);
  while (true) {
    auto connection = co_await listener_->accept();
    if (!connection)
      co_return;
    // Before it takes a place: other machines can't push out programs of this one.
    if (!isAdmittedPeer(connection->peerHost()) || !isSameUser(*connection))
      continue;
    const bool room = co_await connections_.room();
    if (!room)
      co_return;
    auto place = connections_.enter();
    const auto number = place.number();
    connections_.setTask(number, scope_.spawn(serve(std::move(place), std::move(connection))));
  }
}

// The mail is one user's, and others may be at work on this machine.
bool MCPHTTPServer::isSameUser(const platform::TcpConnection& connection) {
  const auto peer = connection.peer();
  if (peer == platform::TcpConnection::Peer::unknown && !std::exchange(toldOfUnknownPeers_, true))
    logger_.error("MCP: this machine doesn't tell whose connections are whose: none can be taken");
  return peer == platform::TcpConnection::Peer::sameUser;
}

// A handler that fails is a fault of this program: its peer is told, and nobody else suffers from it.
async::Task<HTTPResponse> MCPHTTPServer::answerToRPC(std::string body) {
  std::string fault;
  try {
    auto [status, answer] = co_await handleRPC_(std::move(body));
    co_return HTTPResponse{.status = status, .body = std::move(answer), .contentType = "application/json"};
  } catch (const std::exception& error) {
    fault = error.what();
  }
  logger_.error("MCP: a request could not be answered: {}", fault);
  co_return HTTPResponse{.status = 500, .body = "Internal error"};
}

async::Task<std::string> MCPHTTPServer::answerTo(std::string request) {
  auto body = rpcBody(parseHTTPRequest(std::exchange(request, {})));
  if (!body)
    co_return body.error().bytes();
  const auto response = co_await answerToRPC(*std::move(body));
  co_return response.bytes();
}

async::Task<void> MCPHTTPServer::serve(OpenConnections::Place place,
                                       std::unique_ptr<platform::TcpConnection> connection) {
  auto request = co_await receiveRequest(*connection);
  if (request.empty())
    co_return;
  place.setPhase(Phase::working);
  std::string answer;
  {
    async::Scope watch;
    watch.spawn(watchPeer(*connection, connections_, place.number()));
    answer = co_await answerTo(std::move(request));
  }
  const bool givenUp = co_await async::cancelled();
  if (givenUp)
    co_return;
  place.beginSending(answer.size());
  const bool sent = co_await connection->send(std::move(answer));
  if (!sent)
    co_return;
  place.setPhase(Phase::closing);
  connection->endSending();
  co_await async::withDeadline(lingerTime, discardRest(*connection));
}

} // namespace ondrel::mcp
