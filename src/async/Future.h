#pragma once

#include "async/FutureState.h"

#include <cassert>
#include <optional>
#include <utility>

namespace ondrel::async {

template <class T>
class Future;
template <class T>
class Resolver;

// The two ends of an operation that answers by a callback: the operation keeps the resolver, a task awaits
// the future.
template <class T>
std::pair<Resolver<T>, Future<T>> makeFuture();

// What an operation will give. Awaited once, as an rvalue: `co_await std::move(future)` gives
// std::optional<T>, nullopt when the task is cancelled or the resolver was dropped.
template <class T>
class [[nodiscard]] Future {
 public:
  Future(Future&&) noexcept = default;
  Future& operator=(Future&& other) noexcept {
    const Future old(std::move(*this));
    state_ = std::move(other.state_);
    return *this;
  }
  ~Future() {
    if (state_)
      state_->abandon();
  }

  detail::FutureWait<T> operator co_await() && noexcept {
    return detail::FutureWait<T>(std::move(*this).release());
  }

  // For awaitables that stand on this one.
  detail::Shared<detail::FutureState<T>> release() && noexcept {
    assert(state_ && "a future can be awaited once");
    return std::exchange(state_, {});
  }

 private:
  friend std::pair<Resolver<T>, Future<T>> makeFuture<T>();
  explicit Future(detail::Shared<detail::FutureState<T>> state) noexcept : state_(std::move(state)) {}

  detail::Shared<detail::FutureState<T>> state_;
};

// Answers a future, from any callback of the thread: the task that awaits goes on with a later turn.
// Dropped without an answer, it tells the future that none will come.
template <class T>
class [[nodiscard]] Resolver {
 public:
  Resolver(Resolver&&) noexcept = default;
  Resolver& operator=(Resolver&& other) noexcept {
    const Resolver old(std::move(*this));
    state_ = std::move(other.state_);
    return *this;
  }
  ~Resolver() { settle(std::nullopt); }

  // Only the first answer counts.
  void resolve(T value) { settle(std::move(value)); }

  // Whether nobody waits for an answer: the task is gone or cancelled, or has the answer.
  bool abandoned() const noexcept { return !state_ || state_->abandoned(); }

  // Called once when the task that waits is cancelled or goes, so that the operation can be called off. Comes
  // with a later turn or from the destructor of the future, and never after this resolver has answered or
  // died.
  void onAbandon(Callback callback) {
    if (state_)
      state_->setOnAbandon(std::move(callback));
  }

 private:
  friend std::pair<Resolver<T>, Future<T>> makeFuture<T>();
  explicit Resolver(detail::Shared<detail::FutureState<T>> state) noexcept : state_(std::move(state)) {}

  void settle(std::optional<T> value) {
    if (const auto state = std::exchange(state_, {}))
      state->settle(std::move(value));
  }

  detail::Shared<detail::FutureState<T>> state_;
};

template <class T>
std::pair<Resolver<T>, Future<T>> makeFuture() {
  const detail::Shared state(new detail::FutureState<T>);
  return {Resolver<T>(state), Future<T>(state)};
}

} // namespace ondrel::async
