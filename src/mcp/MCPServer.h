#pragma once

#include "async/Task.h"
#include "base/Observable.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace ondrel::mcp {

// The status and the body that answer a posted body.
using RPCAnswer = std::pair<int, std::string>;
// Outlives the servers that call it. Several answers may be under way at a time.
using RPCHandler = std::function<async::Task<RPCAnswer>(std::string body)>;

// Something that listens on a port of this machine and answers requests with an RPCHandler. Started once.
// Destroying it drops the connections that are still served. Main thread only.
class MCPServer {
 public:
  virtual ~MCPServer() = default;

  // Returns before the port is really bound: what goes wrong later is in `failure`. The error is for people.
  virtual std::expected<void, std::string> start(std::uint16_t port) = 0;
  // Returns when nothing listens any more. Connections that are being served go on to their end.
  virtual async::Task<void> stop() = 0;
  // Returns when no connection is left. For after stop().
  virtual async::Task<void> drained() = 0;

  // The port is its own, and connections are taken.
  base::Observable<bool> isListening{false};
  // Why it does not listen although start() went well, for people: the port is in use, say.
  base::Observable<std::optional<std::string>> failure;
};

} // namespace ondrel::mcp
