#pragma once

#include "async/Leaf.h"

#include <cassert>
#include <concepts>
#include <coroutine>
#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace ondrel::async {

class Scope;
template <class T = void>
class [[nodiscard]] Task;

namespace detail {

class TaskPromiseBase {
 public:
  // A task that ends hands over to the one that awaits it, without growing the stack.
  struct FinalAwaiter {
    bool await_ready() const noexcept { return false; }
    template <class P>
    std::coroutine_handle<> await_suspend(std::coroutine_handle<P> frame) const noexcept {
      TaskPromiseBase& promise = frame.promise();
      if (promise.awaiting_)
        return promise.awaiting_;
      promise.context().rootFailed(std::move(promise.failure_));
      return std::noop_coroutine();
    }
    void await_resume() const noexcept {}
  };

  std::suspend_always initial_suspend() const noexcept { return {}; }
  FinalAwaiter final_suspend() const noexcept { return {}; }
  void unhandled_exception() noexcept { failure_ = std::current_exception(); }

  Context& context() const noexcept { return *context_; }
  void enter(Context& context, std::coroutine_handle<> awaiting = nullptr) noexcept {
    context_ = &context;
    awaiting_ = awaiting;
  }

 protected:
  void rethrowFailure() {
    if (failure_)
      std::rethrow_exception(std::move(failure_));
  }

 private:
  Context* context_ = nullptr;
  std::coroutine_handle<> awaiting_;
  std::exception_ptr failure_;
};

template <class T>
class TaskPromise final : public TaskPromiseBase {
 public:
  Task<T> get_return_object() noexcept;
  template <std::convertible_to<T> U = T>
  void return_value(U&& value) {
    value_.emplace(std::forward<U>(value));
  }
  T take() {
    rethrowFailure();
    return std::move(*value_);
  }

 private:
  std::optional<T> value_;
};

template <>
class TaskPromise<void> final : public TaskPromiseBase {
 public:
  Task<void> get_return_object() noexcept;
  void return_void() const noexcept {}
  void take() { rethrowFailure(); }
};

template <class T>
std::coroutine_handle<TaskPromise<T>> handleOf(TaskPromise<T>& promise) noexcept {
  return std::coroutine_handle<TaskPromise<T>>::from_promise(promise);
}

struct FrameDeleter {
  template <class T>
  void operator()(TaskPromise<T>* promise) const noexcept {
    handleOf(*promise).destroy();
  }
};

// Owns a frame by its promise.
template <class T>
using Frame = std::unique_ptr<TaskPromise<T>, FrameDeleter>;

// Owns the frame of the awaited task, so that it goes with the frame that awaits.
template <class T>
class TaskAwaiter {
 public:
  explicit TaskAwaiter(Frame<T> frame) noexcept : frame_(std::move(frame)) {}
  bool await_ready() const noexcept { return false; }
  template <InContext P>
  std::coroutine_handle<> await_suspend(std::coroutine_handle<P> awaiting) noexcept {
    frame_->enter(awaiting.promise().context(), awaiting);
    return handleOf(*frame_);
  }
  T await_resume() { return frame_->take(); }

 private:
  Frame<T> frame_;
};

} // namespace detail

// Asynchronous work that gives a T, written as a coroutine. It begins when it is awaited by another task or
// spawned in a Scope, can be awaited once (as an rvalue), and belongs to whoever holds it: dropping it
// destroys its frame. What it throws is thrown again where it is awaited. One thread only.
template <class T>
class [[nodiscard]] Task {
  static_assert(std::is_void_v<T> || std::is_object_v<T>);

 public:
  using promise_type = detail::TaskPromise<T>;

  detail::TaskAwaiter<T> operator co_await() && noexcept {
    assert(frame_ && "a task can be awaited once");
    return detail::TaskAwaiter<T>(std::move(frame_));
  }

 private:
  friend promise_type;
  friend Scope;
  explicit Task(promise_type& promise) noexcept : frame_(&promise) {}

  detail::Frame<T> frame_;
};

namespace detail {

template <class T>
Task<T> TaskPromise<T>::get_return_object() noexcept {
  return Task<T>(*this);
}

inline Task<void> TaskPromise<void>::get_return_object() noexcept {
  return Task<void>(*this);
}

} // namespace detail

} // namespace ondrel::async
