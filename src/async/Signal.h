#pragma once

#include "async/Leaf.h"

namespace ondrel::async {

namespace detail {
class SignalWait;
}

// Wakes one worker task. Any number of sends while the worker is busy leave one waiting.
class Signal {
 public:
  Signal() = default;
  ~Signal();
  Signal(const Signal&) = delete;
  Signal& operator=(const Signal&) = delete;

  void send();
  // `co_await wait()`: true when the signal was sent, false when the task is cancelled or the signal is gone.
  // One task may wait at a time.
  [[nodiscard]] detail::SignalWait wait() noexcept;

 private:
  friend detail::SignalWait;

  bool sent_ = false;
  detail::SignalWait* waiter_ = nullptr;
};

namespace detail {

class SignalWait final : public Leaf {
 public:
  explicit SignalWait(Signal& signal) noexcept : signal_(&signal) {}
  ~SignalWait() override { detach(); }

  bool await_resume() noexcept;

 private:
  friend Signal;
  void arm() override;
  void onCancel() override;
  void detach() noexcept;

  Signal* signal_;
};

} // namespace detail

inline detail::SignalWait Signal::wait() noexcept {
  return detail::SignalWait(*this);
}

} // namespace ondrel::async
