#pragma once

#include "async/Future.h"
#include "async/Scope.h"
#include "async/Task.h"
#include "base/Log.h"
#include "jmap/protocol/JMAPClient.h"

#include <functional>
#include <memory>
#include <string>

namespace ondrel::platform {
class HttpClient;
class HttpStream;
} // namespace ondrel::platform

namespace ondrel::jmap {

struct EventLine;

// When the last line of a connection came.
class SSELivenessTracker {
 public:
  SSELivenessTracker();
  void lineArrived();
  async::TimePoint lastLineAt() const { return lastLineAt_; }

 private:
  async::TimePoint lastLineAt_;
};

// The server's event stream (RFC 8620, section 7.3): keeps one connection open, opens it again 30 s after
// each end, gives up one that went silent, and tells what kind of objects changed, or may have changed while
// there was no connection. Main thread only.
class EventStream {
 public:
  struct Receivers {
    // Before the first connection of a task that was started with firstStart.
    std::function<async::Task<void>()> firstStart;
    std::function<void()> mailboxesChanged; // also at each start and opening
    std::function<void()> emailsChanged;    // also at each opening
  };

  // Both references outlive it.
  EventStream(JMAPClient& client, platform::HttpClient& http, Receivers receivers);

  // Ends what runs and starts anew, at once.
  void start(bool firstStart);
  // For another account: what was told for this one is forgotten.
  void stop();

 private:
  async::Task<void> run(bool firstStart);
  // One connection from its opening to its end.
  async::Task<Result<void>> runEventSource();
  async::Task<Result<void>> follow(std::unique_ptr<platform::HttpStream> stream);

  struct Connection;
  async::Task<void> read(Connection& connection);
  async::Task<void> watch(Connection& connection);
  void take(Connection& connection, const EventLine& line);
  void limitBurst(Connection& connection) const;
  void tellChanges(Connection& connection) const;

  base::Logger logger_{"network"};
  JMAPClient& client_;
  platform::HttpClient& http_;
  Receivers receivers_;
  std::string lastEventId_; // of the last whole event, for the server to go on from
  async::TaskHandle eventSourceTask_;
  async::Scope scope_;
};

} // namespace ondrel::jmap
