#pragma once

#include "async/EventLoop.h"

#include <optional>

namespace ondrel::async {

// Calls back once, after a length of time, unless it is stopped or destroyed before.
class Timer {
 public:
  Timer() = default;
  Timer(Duration delay, Callback callback);
  Timer(Timer&& other) noexcept;
  Timer& operator=(Timer&& other) noexcept;
  ~Timer() { stop(); }

  void stop() noexcept;

 private:
  std::optional<EventLoop::TimerId> id_;
};

} // namespace ondrel::async
