#include "async/Context.h"

#include "async/EventLoop.h"
#include "async/Leaf.h"
#include "async/Scope.h"

#include <utility>

namespace ondrel::async::detail {

void Context::wake() {
  if (std::exchange(awake_, true))
    return;
  EventLoop::current().post([self = Shared(this)] { self->turn(); });
}

void Context::cancel() {
  if (done() || std::exchange(cancelled_, true))
    return;
  if (leaf_ && !awake_)
    leaf_->onCancel();
}

void Context::abandon() {
  scope_ = nullptr;
  cancelled_ = true;
  if (!running_)
    finish();
}

void Context::suspend(Leaf& leaf, std::coroutine_handle<> frame) {
  leaf_ = &leaf;
  next_ = frame;
  awake_ = false;
  leaf.arm();
  if (cancelled_ && !awake_)
    leaf.onCancel();
}

void Context::leave(const Leaf& leaf) noexcept {
  if (leaf_ == &leaf)
    leaf_ = nullptr;
}

// The only place where frames of the task run.
void Context::turn() {
  if (done())
    return;
  const Shared self(this);
  const bool starting = std::exchange(leaf_, nullptr) == nullptr;
  if (starting && cancelled_) {
    finish();
    return;
  }
  running_ = true;
  next_.resume();
  running_ = false;
  if (root_.done() || !scope_)
    finish();
}

void Context::finish() {
  const Shared self(this);
  const auto root = std::exchange(root_, nullptr);
  // The scope forgets the task first: what the frames hold may own the scope.
  if (auto* scope = std::exchange(scope_, nullptr))
    scope->forget(number_);
  root.destroy();
  if (auto failure = std::exchange(failure_, nullptr))
    reportUnhandled(std::move(failure));
}

} // namespace ondrel::async::detail
