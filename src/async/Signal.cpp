#include "async/Signal.h"

#include <cassert>
#include <utility>

namespace ondrel::async {

Signal::~Signal() {
  if (!waiter_)
    return;
  waiter_->signal_ = nullptr;
  waiter_->wake();
}

void Signal::send() {
  sent_ = true;
  if (waiter_)
    waiter_->wake();
}

namespace detail {

bool SignalWait::await_resume() noexcept {
  if (cancelled() || !signal_)
    return false;
  // Taken only now, so that sends on the way to this turn count as one.
  return std::exchange(signal_->sent_, false);
}

void SignalWait::arm() {
  assert(!signal_->waiter_ && "a signal has one waiter");
  signal_->waiter_ = this;
  if (signal_->sent_)
    wake();
}

void SignalWait::onCancel() {
  detach();
  wake();
}

void SignalWait::detach() noexcept {
  if (signal_ && signal_->waiter_ == this)
    signal_->waiter_ = nullptr;
}

} // namespace detail

} // namespace ondrel::async
