#include "mcp/OpenConnections.h"

#include <algorithm>

namespace ondrel::mcp {

async::Task<bool> OpenConnections::room() {
  while (countWorking() >= mostWorking_) {
    const bool changed = co_await changed_.wait();
    if (!changed)
      co_return false;
  }
  if (entries_.size() - countWorking() >= mostWaiting_)
    giveUpOne();
  co_return true;
}

std::size_t OpenConnections::countWorking() const {
  return static_cast<std::size_t>(std::ranges::count_if(
      entries_, [](const auto& entry) { return entry.second.phase == Phase::working; }));
}

void OpenConnections::giveUpOne() {
  const auto found =
      std::ranges::min_element(entries_, {}, [](const auto& entry) { return entry.second.phase; });
  giveUp(found->first);
}

void OpenConnections::giveUp(std::uint64_t number) {
  const auto found = entries_.find(number);
  if (found == entries_.end())
    return;
  auto task = found->second.task;
  leave(number);
  task.cancel();
}

void OpenConnections::giveUpUnreadBefore(std::uint64_t number) {
  std::size_t unread = 0;
  std::vector<std::uint64_t> others;
  for (const auto& [other, entry] : entries_) {
    unread += entry.unread;
    if (entry.unread > 0 && other != number)
      others.push_back(other);
  }
  for (const auto other : others) {
    if (unread <= mostUnread_)
      return;
    unread -= entries_.at(other).unread;
    giveUp(other);
  }
}

OpenConnections::Place OpenConnections::enter() {
  const auto number = ++lastNumber_;
  entries_.emplace(number, Entry());
  return Place(*this, number);
}

void OpenConnections::setTask(std::uint64_t number, async::TaskHandle task) {
  entries_.at(number).task = std::move(task);
}

async::Task<void> OpenConnections::drained() {
  if (entries_.empty())
    co_return;
  auto [resolver, future] = async::makeFuture<std::monostate>();
  whenDrained_.push_back(std::move(resolver));
  co_await std::move(future);
}

// Twice for a connection that was given up.
void OpenConnections::leave(std::uint64_t number) {
  if (entries_.erase(number) == 0)
    return;
  changed_.send();
  if (entries_.empty())
    whenDrained_.clear(); // a resolver that goes is an answer
}

void OpenConnections::Place::setPhase(Phase phase) {
  if (const auto found = connections_->entries_.find(number_); found != connections_->entries_.end()) {
    found->second.phase = phase;
    found->second.unread = 0;
    connections_->changed_.send();
  }
}

void OpenConnections::Place::beginSending(std::size_t size) {
  setPhase(Phase::sending);
  if (const auto found = connections_->entries_.find(number_); found != connections_->entries_.end()) {
    found->second.unread = size;
    connections_->giveUpUnreadBefore(number_);
  }
}

} // namespace ondrel::mcp
