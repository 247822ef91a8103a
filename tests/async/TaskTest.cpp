#include "AsyncTest.h"

#include <stdexcept>

namespace ondrel::async {
namespace {

using TaskTest = AsyncTest;

Task<int> throwing(bool late) {
  const Held held;
  if (late)
    co_await nextTurn();
  throw std::out_of_range("deep");
}

Task<std::unique_ptr<int>> passing(bool late) {
  const Held held;
  const int value = co_await throwing(late);
  co_return std::make_unique<int>(value);
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

TEST_F(TaskTest, CarriesExceptionsThroughLayers) {
  for (const bool late : {false, true}) {
    log.clear();
    spawn(catching(late, &log));
    loop.runUntilIdle();
    EXPECT_EQ(log, (Lines{"deep", "went on"}));
  }
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

Task<void> chaining(int depth, int* result) {
  *result = co_await chain(depth);
}

TEST_F(TaskTest, ADeepChainDoesNotGrowTheStack) {
  int depth = 0;
  spawn(chaining(20'000, &depth));
  loop.runUntilIdle();
  EXPECT_EQ(depth, 20'000);

  spawn(chaining(1'000, &depth)); // and destroyed in the midst of it
  loop.runUntil([&] { return held() > 0; }, 0s);
  EXPECT_EQ(held(), 1'001);
}

} // namespace
} // namespace ondrel::async
