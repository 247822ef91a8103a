#pragma once

#include "async/Counted.h"

#include <coroutine>
#include <cstdint>
#include <exception>

namespace ondrel::async {
class Scope;
}

namespace ondrel::async::detail {

class Leaf;

// What all frames of one spawned task share: the root frame, which owns all others, whether the task is
// cancelled, and the one leaf at which it waits. Outlives the frames for as long as a handle or a posted turn
// refers to it.
class Context final : public Counted<Context> {
 public:
  Context(Scope& scope, std::uint64_t number, std::coroutine_handle<> root) noexcept
      : scope_(&scope), number_(number), root_(root), next_(root) {}

  // Posts the next turn of the task: its start, or going on after the leaf. Once for each suspension.
  void wake();
  // Tells the leaf. Runs no code of the task; a task that has not started never will.
  void cancel();
  // The scope is going: destroys the frames, or, while the task is running, lets it get to its next
  // suspension.
  void abandon();

  bool cancelled() const noexcept { return cancelled_; }
  bool done() const noexcept { return !root_; }

  void suspend(Leaf& leaf, std::coroutine_handle<> frame);
  void leave(const Leaf& leaf) noexcept;
  void rootFailed(std::exception_ptr failure) noexcept { failure_ = std::move(failure); }

 private:
  void turn();
  void finish();

  Scope* scope_;
  std::uint64_t number_;
  std::coroutine_handle<> root_;
  std::coroutine_handle<> next_;
  Leaf* leaf_ = nullptr;
  std::exception_ptr failure_;
  bool awake_ = false;
  bool running_ = false;
  bool cancelled_ = false;
};

} // namespace ondrel::async::detail
