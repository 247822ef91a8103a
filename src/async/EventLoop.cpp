#include "async/EventLoop.h"

#include <cassert>
#include <utility>

namespace ondrel::async {

namespace {
thread_local EventLoop* currentLoop = nullptr;
}

TimePoint EventLoop::after(Duration duration) const {
  const TimePoint start = now();
  if (duration > TimePoint::max() - start)
    return TimePoint::max();
  return start + duration;
}

EventLoop& EventLoop::current() {
  assert(currentLoop && "no event loop is installed on this thread");
  return *currentLoop;
}

EventLoop::Installed::Installed(EventLoop& loop) : previous_(std::exchange(currentLoop, &loop)) {
}

EventLoop::Installed::~Installed() {
  currentLoop = previous_;
}

} // namespace ondrel::async
