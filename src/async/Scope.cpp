#include "async/Scope.h"

#include <cassert>

namespace ondrel::async {

namespace {
std::function<void(std::exception_ptr)> unhandledExceptionHandler;

// Thrown where nobody can catch it, so that std::terminate still says what it was.
[[noreturn]] void terminateWith(std::exception_ptr failure) noexcept {
  std::rethrow_exception(std::move(failure));
}
} // namespace

Scope::~Scope() {
  // Destroying frames can end tasks of other scopes and spawn into this one.
  while (!tasks_.empty())
    tasks_.extract(tasks_.begin()).mapped()->abandon();
}

TaskHandle Scope::spawn(Task<void> task) {
  assert(task.frame_ && "the task was awaited or spawned before");
  const std::uint64_t number = ++lastNumber_;
  const detail::Shared context(new detail::Context(*this, number, detail::handleOf(*task.frame_)));
  tasks_.emplace(number, context);
  task.frame_.release()->enter(*context);
  context->wake();
  return TaskHandle(context);
}

void Scope::cancelAll() {
  for (const auto& [number, context] : tasks_)
    context->cancel();
}

void setUnhandledExceptionHandler(std::function<void(std::exception_ptr)> handler) {
  unhandledExceptionHandler = std::move(handler);
}

void detail::reportUnhandled(std::exception_ptr failure) {
  if (!unhandledExceptionHandler)
    terminateWith(std::move(failure));
  unhandledExceptionHandler(std::move(failure));
}

} // namespace ondrel::async
