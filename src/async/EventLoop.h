#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace ondrel::async {

using Duration = std::chrono::nanoseconds;

// Time that never steps back and goes on while the machine sleeps. Only an EventLoop can tell what the time
// is.
struct ContinuousClock {
  using duration = Duration;
  using rep = duration::rep;
  using period = duration::period;
  using time_point = std::chrono::time_point<ContinuousClock>;
  static constexpr bool is_steady = true;
};
using TimePoint = ContinuousClock::time_point;
using Callback = std::move_only_function<void()>;

// Where all work of a thread takes its turns; the main thread has one. Not to be called from other threads.
class EventLoop {
 public:
  enum class TimerId : std::uint64_t {};
  class Installed;

  virtual ~EventLoop() = default;

  virtual TimePoint now() const = 0;
  // Calls back once, at or soon after `when`, and never from inside schedule().
  virtual TimerId schedule(TimePoint when, Callback callback) = 0;
  // The callback of a cancelled timer never comes. Unknown and fired timers are ignored.
  virtual void cancel(TimerId timer) noexcept = 0;
  // Calls back on the next turn, in the order of posting.
  virtual void post(Callback callback) = 0;

  // The point that lies so far ahead of now; the end of time where that can't be represented.
  TimePoint after(Duration duration) const;

  // The loop of this thread. One must be installed.
  static EventLoop& current();

 protected:
  EventLoop() = default;
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;
};

// Makes a loop the current one of this thread for as long as this object lives.
class EventLoop::Installed {
 public:
  explicit Installed(EventLoop& loop);
  ~Installed();
  Installed(const Installed&) = delete;
  Installed& operator=(const Installed&) = delete;

 private:
  EventLoop* previous_;
};

} // namespace ondrel::async
