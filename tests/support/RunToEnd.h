#pragma once

#include "async/Scope.h"
#include "async/VirtualEventLoop.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <utility>

namespace ondrel::support {

template <class T>
async::Task<void> keepResult(async::Task<T> task, std::optional<T>* result) {
  result->emplace(co_await std::move(task));
}

// Runs a task to its end, in virtual time; the test fails when it has none within an hour.
template <class T>
T runToEnd(async::VirtualEventLoop& loop, async::Scope& scope, async::Task<T> task) {
  std::optional<T> result;
  scope.spawn(keepResult(std::move(task), &result));
  loop.advance(std::chrono::hours(1));
  EXPECT_TRUE(result) << "it never ended";
  return std::move(result).value();
}

} // namespace ondrel::support
