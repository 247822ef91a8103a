#pragma once

#include "async/Context.h"
#include "async/Task.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <utility>

namespace ondrel::async {

// Refers to one spawned task and keeps nothing of it alive. Dropping the handle does not cancel the task.
class TaskHandle {
 public:
  TaskHandle() = default;

  // From now on each wait of the task answers "cancelled". A task that has not had its first turn never runs.
  void cancel() {
    if (context_)
      context_->cancel();
  }
  // Whether the task has ended and its frames are gone. An empty handle is done.
  bool done() const noexcept { return !context_ || context_->done(); }
  // Whether the handle refers to a task at all, done or not.
  explicit operator bool() const noexcept { return static_cast<bool>(context_); }

 private:
  friend Scope;
  explicit TaskHandle(detail::Shared<detail::Context> context) noexcept : context_(std::move(context)) {}

  detail::Shared<detail::Context> context_;
};

// Where plain code starts tasks. The object that the work serves holds the scope as its last member, so that
// the scope dies first: it destroys the frames of all tasks that wait. A task that is itself running then (it
// closes the window that owns the scope, say) goes on to its next wait or its end and is destroyed there.
class Scope {
 public:
  Scope() = default;
  ~Scope();
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

  // The task starts on a later turn; tasks start in the order of spawning.
  TaskHandle spawn(Task<void> task);
  void cancelAll();
  // How many tasks have not ended.
  std::size_t active() const noexcept { return tasks_.size(); }

 private:
  friend class detail::Context;
  void forget(std::uint64_t number) noexcept { tasks_.erase(number); }

  std::uint64_t lastNumber_ = 0;
  std::map<std::uint64_t, detail::Shared<detail::Context>> tasks_;
};

// Takes what escapes a spawned task. Without a handler that ends the program.
void setUnhandledExceptionHandler(std::function<void(std::exception_ptr)> handler);

namespace detail {
void reportUnhandled(std::exception_ptr failure);
}

} // namespace ondrel::async
