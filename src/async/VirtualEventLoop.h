#pragma once

#include "async/EventLoop.h"

#include <cstddef>
#include <deque>
#include <map>
#include <optional>
#include <utility>

namespace ondrel::async {

// A loop whose time moves only when it is told to, so that every delay can be tested exactly and at once.
// Time starts at zero. What is posted runs before any timer; timers of one instant run in the order of
// scheduling. It is the current loop for as long as it lives.
class VirtualEventLoop final : public EventLoop {
 public:
  VirtualEventLoop() = default;
  ~VirtualEventLoop() override;

  TimePoint now() const override { return now_; }
  // A point in the past counts as now.
  TimerId schedule(TimePoint when, Callback callback) override;
  void cancel(TimerId timer) noexcept override;
  void post(Callback callback) override;

  // Runs what is posted and the timers that are due, until nothing is left for this instant.
  // Throws std::runtime_error when that never comes to an end.
  void runUntilIdle();
  // Moves time on, stopping at every timer on the way.
  void advance(Duration duration);
  // Jumps from timer to timer until the predicate holds. False when the limit passed or nothing is left to
  // run.
  bool runUntil(std::move_only_function<bool()> predicate, Duration limit);

  std::size_t pendingTimers() const { return timers_.size(); }
  std::optional<TimePoint> nextTimer() const;

 private:
  bool runOne(TimePoint limit);

  Installed installed_{*this};
  TimePoint now_{};
  std::uint64_t lastTimer_ = 0;
  std::deque<Callback> posted_;
  // Ids grow, so timers of one instant keep their order.
  std::map<std::pair<TimePoint, TimerId>, Callback> timers_;
};

} // namespace ondrel::async
