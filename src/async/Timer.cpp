#include "async/Timer.h"

#include <utility>

namespace ondrel::async {

Timer::Timer(Duration delay, Callback callback) {
  EventLoop& loop = EventLoop::current();
  id_ = loop.schedule(loop.after(delay), std::move(callback));
}

Timer::Timer(Timer&& other) noexcept : id_(std::exchange(other.id_, std::nullopt)) {
}

Timer& Timer::operator=(Timer&& other) noexcept {
  if (this != &other) {
    stop();
    id_ = std::exchange(other.id_, std::nullopt);
  }
  return *this;
}

void Timer::stop() noexcept {
  if (const auto id = std::exchange(id_, std::nullopt))
    EventLoop::current().cancel(*id);
}

} // namespace ondrel::async
