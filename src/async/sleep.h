#pragma once

#include "async/EventLoop.h"
#include "async/Leaf.h"
#include "async/Timer.h"

#include <coroutine>

namespace ondrel::async {

namespace detail {

class Sleep final : public Leaf {
 public:
  explicit Sleep(Duration duration) noexcept : duration_(duration) {}
  bool await_resume() const noexcept { return !cancelled(); }

 private:
  void arm() override {
    timer_ = Timer(duration_, [this] { wake(); });
  }
  void onCancel() override {
    timer_.stop();
    wake();
  }

  Duration duration_;
  Timer timer_;
};

class NextTurn final : public Leaf {
 public:
  bool await_resume() const noexcept { return !cancelled(); }

 private:
  void arm() override { wake(); }
  void onCancel() override {}
};

struct CancelledQuery {
  bool await_ready() const noexcept { return false; }
  template <InContext P>
  bool await_suspend(std::coroutine_handle<P> frame) noexcept {
    answer = frame.promise().context().cancelled();
    return false;
  }
  bool await_resume() const noexcept { return answer; }

  bool answer = false;
};

} // namespace detail

// `co_await sleep(d)`: true when the task slept through, false when it is cancelled.
[[nodiscard]] inline detail::Sleep sleep(Duration duration) noexcept {
  return detail::Sleep(duration);
}

// `co_await nextTurn()`: lets others have their turn. False when the task is cancelled.
[[nodiscard]] inline detail::NextTurn nextTurn() noexcept {
  return {};
}

// `co_await cancelled()`: whether the task is cancelled, without suspending it.
[[nodiscard]] inline detail::CancelledQuery cancelled() noexcept {
  return {};
}

} // namespace ondrel::async
