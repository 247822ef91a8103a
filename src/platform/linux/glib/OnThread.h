#pragma once

#include "async/Task.h"

#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace ondrel::glib {

// Work for another thread. It must not touch what this one may change meanwhile.
using ThreadWork = std::function<void()>;

// Starts work on one of GIO's threads.
void startOnThread(ThreadWork work);
// The same, and waits for its end. False when the waiting task is cancelled: the work goes on then, and its
// function object goes with it.
async::Task<bool> runOnThread(ThreadWork work);

// The same of work that gives something, by a function that gives it; nothing when the waiting task is
// cancelled.
template <class Make>
async::Task<std::optional<std::invoke_result_t<Make>>> onThread(Make make) {
  const auto result = std::make_shared<std::optional<std::invoke_result_t<Make>>>();
  const auto shared = std::make_shared<Make>(std::move(make));
  const bool isDone = co_await runOnThread([result, shared] { result->emplace((*shared)()); });
  if (!isDone)
    co_return std::nullopt;
  co_return std::move(*result);
}

} // namespace ondrel::glib
