#include "async/VirtualEventLoop.h"

#include <algorithm>
#include <stdexcept>

namespace ondrel::async {

namespace {
constexpr std::size_t mostCallbacksInOneInstant = 10'000'000;
}

VirtualEventLoop::~VirtualEventLoop() {
  // Dropping a callback can run destructors that post or cancel here.
  while (!posted_.empty() || !timers_.empty()) {
    const auto posted = std::exchange(posted_, {});
    const auto timers = std::exchange(timers_, {});
  }
}

EventLoop::TimerId VirtualEventLoop::schedule(TimePoint when, Callback callback) {
  const TimerId id{++lastTimer_};
  timers_.emplace(std::pair{std::max(when, now_), id}, std::move(callback));
  return id;
}

void VirtualEventLoop::cancel(TimerId timer) noexcept {
  const auto found = std::ranges::find(timers_, timer, [](const auto& entry) { return entry.first.second; });
  if (found != timers_.end())
    timers_.extract(found);
}

void VirtualEventLoop::post(Callback callback) {
  posted_.push_back(std::move(callback));
}

// Runs the next callback that is due by the limit, moving time to it.
bool VirtualEventLoop::runOne(TimePoint limit) {
  Callback callback;
  if (!posted_.empty()) {
    callback = std::move(posted_.front());
    posted_.pop_front();
  } else if (!timers_.empty() && timers_.begin()->first.first <= limit) {
    auto timer = timers_.extract(timers_.begin());
    now_ = std::max(now_, timer.key().first);
    callback = std::move(timer.mapped());
  } else {
    return false;
  }
  callback();
  return true;
}

void VirtualEventLoop::runUntilIdle() {
  for (std::size_t count = 0; runOne(now_); ++count)
    if (count == mostCallbacksInOneInstant)
      throw std::runtime_error("the event loop never becomes idle");
}

void VirtualEventLoop::advance(Duration duration) {
  const TimePoint target = after(duration);
  runUntilIdle();
  while (!timers_.empty() && timers_.begin()->first.first <= target) {
    now_ = std::max(now_, timers_.begin()->first.first);
    runUntilIdle();
  }
  now_ = std::max(now_, target);
}

bool VirtualEventLoop::runUntil(std::move_only_function<bool()> predicate, Duration limit) {
  const TimePoint target = after(limit);
  while (!predicate()) {
    if (runOne(target))
      continue;
    if (!timers_.empty())
      now_ = std::max(now_, target);
    return false;
  }
  return true;
}

std::optional<TimePoint> VirtualEventLoop::nextTimer() const {
  if (timers_.empty())
    return std::nullopt;
  return timers_.begin()->first.first;
}

} // namespace ondrel::async
