#pragma once

#include "async/Context.h"

#include <concepts>
#include <coroutine>

namespace ondrel::async::detail {

template <class P>
concept InContext = requires(P& promise) {
  { promise.context() } -> std::same_as<Context&>;
};

// Base of the awaitables at which a task really waits. Lives in the frame of the task that awaits it.
class Leaf {
 public:
  virtual ~Leaf() {
    if (context_)
      context_->leave(*this);
  }
  Leaf(const Leaf&) = delete;
  Leaf& operator=(const Leaf&) = delete;

  bool await_ready() const noexcept { return false; }
  template <InContext P>
  void await_suspend(std::coroutine_handle<P> frame) {
    context_ = &frame.promise().context();
    context_->suspend(*this, frame);
  }

 protected:
  Leaf() = default;
  // The task goes on with a later turn of the loop.
  void wake() { context_->wake(); }
  bool cancelled() const noexcept { return context_->cancelled(); }

 private:
  friend class Context;
  // The task has suspended here: see to it that something wakes it.
  virtual void arm() = 0;
  // The task was cancelled while it waits here, perhaps right after arm(). Must not run code of others.
  virtual void onCancel() = 0;

  Context* context_ = nullptr;
};

} // namespace ondrel::async::detail
