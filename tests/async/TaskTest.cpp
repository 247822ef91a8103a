#include "AsyncTest.h"

#include <algorithm>
#include <expected>
#include <functional>
#include <stdexcept>

namespace ondrel::async {
namespace {

using TaskTest = AsyncTest;
using Result = std::expected<std::unique_ptr<int>, std::string>;

Task<int> ready(int value) {
  co_return value;
}

Task<Result> fallible(bool good) {
  if (!good)
    co_return std::unexpected("bad");
  co_return std::make_unique<int>(7);
}

Task<int> throwing(bool late) {
  const Held held;
  if (late)
    co_await nextTurn();
  throw std::out_of_range("deep");
}

Task<Result> passing(bool late) {
  const Held held;
  const int value = co_await throwing(late);
  co_return std::make_unique<int>(value);
}

Task<int> chain(int depth) {
  const Held held;
  if (depth == 0) {
    co_await nextTurn();
    co_return 0;
  }
  const int below = co_await chain(depth - 1);
  co_return below + 1;
}

Task<void> catching(bool late, Lines* log) {
  try {
    co_await passing(late);
  } catch (const std::out_of_range& error) {
    log->push_back(error.what());
  }
  EXPECT_EQ(Held::alive, 1) << "a frame that the exception left is still there";
  co_await nextTurn();
  log->push_back("went on");
}

Task<void> collecting(Lines* log) {
  Task<Result> kept = fallible(true);
  Task<Result> moved = std::move(kept);
  const Result good = co_await std::move(moved);
  const Result bad = co_await fallible(false);
  log->push_back(std::to_string(**good) + bad.error());
}

Task<void> summing(int count, long* total) {
  for (int i = 0; i < count; ++i) {
    const int value = co_await ready(i);
    *total += value;
  }
}

Task<void> chaining(int depth, int* result) {
  *result = co_await chain(depth);
}

Task<void> numbered(int number, std::vector<int>* ended) {
  const Held held;
  for (int i = 0; i < 3; ++i)
    co_await sleep(1ms * (1000 - number));
  ended->push_back(number);
}

TEST_F(TaskTest, carriesExceptionsThroughLayers) {
  for (const bool late : {false, true}) {
    log.clear();
    spawn(catching(late, &log));
    loop.runUntilIdle();
    EXPECT_EQ(log, (Lines{"deep", "went on"}));
  }
}

TEST_F(TaskTest, givesMoveOnlyValuesAndErrors) {
  spawn(collecting(&log));
  loop.runUntilIdle();
  EXPECT_EQ(log, Lines{"7bad"});
}

TEST_F(TaskTest, neitherReadyNorDeepChainsGrowTheStack) {
  long total = 0;
  spawn(summing(100'000, &total));
  int depth = 0;
  spawn(chaining(20'000, &depth));
  loop.runUntilIdle();
  EXPECT_EQ(total, 99'999L * 100'000 / 2);
  EXPECT_EQ(depth, 20'000);

  spawn(chaining(1'000, &depth)); // and destroyed in the midst of it
  loop.runUntil([&] { return held() > 0; }, 0s);
  EXPECT_EQ(held(), 1'001);
}

TEST_F(TaskTest, runsAThousandTasksSideBySide) {
  std::vector<int> ended;
  for (int i = 0; i < 1000; ++i)
    spawn(numbered(i, &ended));
  EXPECT_EQ(owner->scope.active(), 1000u);
  loop.advance(1500ms);
  EXPECT_EQ(owner->scope.active(), 500u);
  EXPECT_EQ(held(), 500);
  loop.advance(1500ms);
  EXPECT_EQ(owner->scope.active(), 0u);
  EXPECT_EQ(ended.size(), 1000u);
  EXPECT_TRUE(std::ranges::is_sorted(ended, std::greater{}));
}

} // namespace
} // namespace ondrel::async
