#pragma once

#include "async/Counted.h"
#include "async/EventLoop.h"
#include "async/Leaf.h"

#include <optional>
#include <utility>

namespace ondrel::async::detail {

template <class T>
class FutureWait;

// The heap node that a resolver and its future share; whichever side dies first, the other one stays valid.
template <class T>
class FutureState final : public Counted<FutureState<T>> {
 public:
  // The resolver's last act: a value, or nullopt where none will come.
  void settle(std::optional<T> value) {
    settled_ = true;
    onAbandon_ = nullptr;
    if (abandoned_)
      return;
    value_ = std::move(value);
    if (waiter_)
      waiter_->wake();
  }

  bool abandoned() const noexcept { return abandoned_; }

  void setOnAbandon(Callback callback) {
    onAbandon_ = std::move(callback);
    if (abandoned_)
      callOnAbandonLater();
  }

  void wait(FutureWait<T>& waiter) {
    waiter_ = &waiter;
    if (settled_)
      waiter_->wake();
  }

  std::optional<T> take() { return std::move(value_); }

  void abandon() {
    waiter_ = nullptr;
    abandoned_ = true;
    if (Callback callback = std::exchange(onAbandon_, nullptr))
      callback();
  }

  void abandonLater() {
    waiter_ = nullptr;
    abandoned_ = true;
    if (onAbandon_)
      callOnAbandonLater();
  }

 private:
  void callOnAbandonLater() {
    EventLoop::current().post([self = Shared(this)] { self->abandon(); });
  }

  bool settled_ = false;
  bool abandoned_ = false;
  std::optional<T> value_;
  FutureWait<T>* waiter_ = nullptr;
  Callback onAbandon_;
};

// Where a task waits for a future. Takes the place of the Future, with all its duties.
template <class T>
class FutureWait : public Leaf {
 public:
  explicit FutureWait(Shared<FutureState<T>> state) noexcept : state_(std::move(state)) {}
  ~FutureWait() override { state_->abandon(); }

  std::optional<T> await_resume() { return cancelled() ? std::nullopt : state_->take(); }

 protected:
  std::optional<T> take() { return state_->take(); }

 private:
  friend FutureState<T>;
  void arm() override { state_->wait(*this); }
  void onCancel() override {
    state_->abandonLater();
    wake();
  }

  Shared<FutureState<T>> state_;
};

} // namespace ondrel::async::detail
