#pragma once

#include "async/Future.h"
#include "async/Scope.h"
#include "async/Task.h"
#include "async/Timer.h"

#include <exception>
#include <expected>
#include <memory>
#include <optional>
#include <utility>

namespace ondrel::async {

namespace detail {

template <class T>
using Outcome = std::expected<T, std::exception_ptr>;

// Waits for the outcome of work in a scope. A cancelled task doesn't leave before the work has seen it and
// ended.
template <class T>
class OutcomeWait final : public FutureWait<Outcome<T>> {
 public:
  OutcomeWait(Future<Outcome<T>> future, std::unique_ptr<Scope>& work) noexcept
      : FutureWait<Outcome<T>>(std::move(future).release()), work_(work) {}

  std::optional<Outcome<T>> await_resume() { return this->take(); }

 private:
  void onCancel() override {
    if (work_)
      work_->cancelAll();
  }

  std::unique_ptr<Scope>& work_;
};

template <class T>
Task<void> deliver(Task<T> task, Resolver<Outcome<T>> resolver) {
  std::exception_ptr failure;
  try {
    T value = co_await std::move(task);
    resolver.resolve(Outcome<T>(std::in_place, std::move(value)));
  } catch (...) {
    failure = std::current_exception();
  }
  if (failure)
    resolver.resolve(Outcome<T>(std::unexpect, std::move(failure)));
}

} // namespace detail

// Runs a task for no longer than the limit. After that the result is nullopt, and the task's frames are
// destroyed. Cancelling the awaiting task cancels the inner one, whose own result is then given; nullopt if
// it never began.
template <class T>
Task<std::optional<T>> withDeadline(Duration limit, Task<T> task) {
  auto [resolver, future] = makeFuture<detail::Outcome<T>>();
  auto work = std::make_unique<Scope>();
  // Ending the work drops the resolver, which answers. The work may own what owns this frame: not touched
  // after that.
  const Timer timer(limit, [&work] { work.reset(); });
  work->spawn(detail::deliver(std::move(task), std::move(resolver)));

  std::optional<detail::Outcome<T>> outcome = co_await detail::OutcomeWait<T>(std::move(future), work);
  if (!outcome)
    co_return std::nullopt;
  if (!*outcome)
    std::rethrow_exception(std::move(outcome->error()));
  co_return std::move(**outcome);
}

} // namespace ondrel::async
