#include "AsyncTest.h"

#include "async/Deadline.h"
#include "async/Future.h"
#include "async/Signal.h"

// What holds at each place where a task can wait: it ends when it is cancelled there, and goes when its scope
// goes.
namespace ondrel::async {
namespace {

struct World {
  std::optional<Resolver<int>> resolver;
  Signal signal;
};

Task<bool> waitInSleep(World*) {
  co_return co_await sleep(1h);
}

Task<bool> waitForFuture(World* world) {
  const Held held;
  auto [resolver, future] = makeFuture<int>();
  world->resolver = std::move(resolver);
  const auto value = co_await std::move(future);
  co_return value.has_value();
}

Task<bool> waitForSignal(World* world) {
  co_return co_await world->signal.wait();
}

Task<bool> waitInDeadline(World* world) {
  const Held held;
  const std::optional<bool> answer = co_await withDeadline(1h, waitForFuture(world));
  co_return answer.value_or(false);
}

using Wait = Task<bool> (*)(World*);

Task<void> waitTwice(Wait wait, World* world, Lines* log) {
  const Held held;
  log->push_back("begun");
  const bool first = co_await wait(world);
  const bool told = co_await cancelled();
  const bool second = co_await wait(world);
  log->push_back(first || second || !told ? "not cancelled" : "cancelled");
}

class WaitTest : public AsyncTest, public testing::WithParamInterface<Wait> {
 protected:
  void SetUp() override { handle = spawn(waitTwice(GetParam(), &world, &log)); }
  void TearDown() override {
    EXPECT_TRUE(handle.done());
    EXPECT_EQ(held(), 0);
    EXPECT_EQ(loop.now(), TimePoint{});
    EXPECT_EQ(loop.pendingTimers(), 0u);
    EXPECT_TRUE(!world.resolver || world.resolver->abandoned());
    world.signal.send();
    loop.runUntilIdle();
  }

  World world;
  TaskHandle handle;
};

TEST_P(WaitTest, AnswersCancelledOnALaterTurn) {
  loop.runUntilIdle();
  handle.cancel();
  handle.cancel();
  EXPECT_EQ(log, Lines{"begun"}) << "resumed from inside cancel()";
  EXPECT_FALSE(handle.done());
  loop.runUntilIdle();
  EXPECT_EQ(log, (Lines{"begun", "cancelled"}));
  EXPECT_EQ(owner->scope.active(), 0u);
}

TEST_P(WaitTest, GoesWithItsScope) {
  for (const bool cancelledBefore : {false, true}) {
    log.clear();
    owner = std::make_unique<Owner>();
    handle = spawn(waitTwice(GetParam(), &world, &log));
    loop.runUntilIdle();
    EXPECT_GE(held(), 1);
    if (cancelledBefore)
      handle.cancel();
    owner.reset();
    EXPECT_TRUE(handle.done());
    loop.runUntilIdle();
    EXPECT_EQ(log, Lines{"begun"});
  }
}

INSTANTIATE_TEST_SUITE_P(SleepFutureSignalDeadline, WaitTest,
                         testing::Values(waitInSleep, waitForFuture, waitForSignal, waitInDeadline));

using SleepTest = AsyncTest;

TEST_F(SleepTest, IsCancelledEvenAfterItsTimerFired) {
  TaskHandle handle = spawn(sleeper(&log, "late", 1s));
  loop.runUntilIdle();
  loop.runUntil([&] { return loop.pendingTimers() == 0; }, 1s);
  EXPECT_TRUE(log.empty());
  handle.cancel();
  loop.runUntilIdle();
  EXPECT_EQ(log, Lines{"late cancelled"});
}

} // namespace
} // namespace ondrel::async
