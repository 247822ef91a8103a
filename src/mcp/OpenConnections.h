#pragma once

#include "async/Future.h"
#include "async/Scope.h"
#include "async/Signal.h"
#include "async/Task.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <variant>
#include <vector>

namespace ondrel::mcp {

// The connections of a server, of which there are never too many. A flood of silent ones costs the oldest
// silent ones their place. A request that is being worked on keeps its own, and where there are too many of
// them, nobody enters. Peers that don't read their answers lose them, the oldest first, when newer ones need
// the memory.
class OpenConnections {
 public:
  // In the order in which connections are given up; the last never is. Within one phase the oldest goes
  // first.
  enum class Phase { closing, reading, sending, working };
  class Place;

  // Connections that wait for their peer, ones that are worked on, and bytes of unread answers.
  OpenConnections(std::size_t mostWaiting, std::size_t mostWorking, std::size_t mostUnread)
      : mostWaiting_(mostWaiting), mostWorking_(mostWorking), mostUnread_(mostUnread) {}
  OpenConnections(const OpenConnections&) = delete;
  OpenConnections& operator=(const OpenConnections&) = delete;

  // Waits until one more may enter, giving up another one for it if need be. False when the task is
  // cancelled.
  async::Task<bool> room();
  // A place for a connection that begins to be read.
  Place enter();
  // What to cancel when the place is given up.
  void setTask(std::uint64_t number, async::TaskHandle task);
  // Ends its task and frees its place at once.
  void giveUp(std::uint64_t number);
  // Returns when no connection is left.
  async::Task<void> drained();

 private:
  struct Entry {
    Phase phase = Phase::reading;
    std::size_t unread = 0; // bytes, while sending
    async::TaskHandle task = {};
  };

  std::size_t countWorking() const;
  void giveUpOne();
  void giveUpUnreadBefore(std::uint64_t number);
  void leave(std::uint64_t number);

  std::size_t mostWaiting_;
  std::size_t mostWorking_;
  std::size_t mostUnread_;
  std::uint64_t lastNumber_ = 0;
  std::map<std::uint64_t, Entry> entries_; // the oldest first
  async::Signal changed_;
  std::vector<async::Resolver<std::monostate>> whenDrained_;
};

// One connection's place, for as long as its task lives.
class OpenConnections::Place {
 public:
  Place(Place&& other) noexcept
      : connections_(std::exchange(other.connections_, nullptr)), number_(other.number_) {}
  Place& operator=(Place&&) = delete;
  ~Place() {
    if (connections_)
      connections_->leave(number_);
  }

  std::uint64_t number() const { return number_; }
  void setPhase(Phase phase);
  // The phase in which an answer of that many bytes waits to be read.
  void beginSending(std::size_t size);

 private:
  friend OpenConnections;
  Place(OpenConnections& connections, std::uint64_t number) : connections_(&connections), number_(number) {}

  OpenConnections* connections_;
  std::uint64_t number_;
};

} // namespace ondrel::mcp
