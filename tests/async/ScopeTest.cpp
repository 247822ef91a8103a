#include "AsyncTest.h"

#include "async/Deadline.h"
#include "async/Future.h"

#include <stdexcept>

namespace ondrel::async {
namespace {

using ScopeTest = AsyncTest;

Task<void> line(Lines* log, std::string text) {
  log->push_back(std::move(text));
  co_return;
}

Task<void> failing(Duration after) {
  const Held held;
  co_await sleep(after);
  throw std::runtime_error("escaped");
}

TEST_F(ScopeTest, startsTasksInOrderOnALaterTurn) {
  loop.post([&] { log.push_back("posted before"); });
  spawn(line(&log, "first"));
  spawn(line(&log, "second"));
  EXPECT_TRUE(log.empty());
  loop.runUntilIdle();
  EXPECT_EQ(log, (Lines{"posted before", "first", "second"}));

  const TaskHandle late = spawn(line(&log, "never"));
  owner.reset();
  EXPECT_TRUE(late.done());
  loop.runUntilIdle();
  EXPECT_EQ(log.size(), 3u);
}

TEST_F(ScopeTest, handlesReferToOneTaskAndKeepNothing) {
  TaskHandle none;
  none.cancel();
  EXPECT_FALSE(none);
  EXPECT_TRUE(none.done());

  TaskHandle a = spawn(sleeper(&log, "a", 1s));
  spawn(sleeper(&log, "b", 1s)); // a dropped handle leaves its task alone
  TaskHandle copy = a;
  loop.runUntilIdle();
  EXPECT_EQ(held(), 2);
  copy.cancel();
  loop.advance(2s);
  EXPECT_EQ(log, (Lines{"a cancelled", "b slept"}));
  EXPECT_TRUE(a && a.done() && copy.done());
  EXPECT_EQ(held(), 0);
  a.cancel();
}

enum class Then { End, Wait, Throw };

// Destroys the owner of the scope that it runs in.
Task<void> closing(std::unique_ptr<Owner>* owner, Lines* log, Then then) {
  const Held held;
  owner->reset();
  const bool told = co_await cancelled();
  log->push_back(told ? "closed, told" : "closed");
  if (then == Then::Throw)
    throw std::runtime_error("after the end");
  if (then == Then::Wait)
    co_await sleep(1s);
  log->push_back("ended");
}

Task<void> closingBelow(std::unique_ptr<Owner>* owner, Lines* log, Then then) {
  const Held held;
  co_await closing(owner, log, then);
  co_await nextTurn();
  log->push_back("went on");
}

TEST_F(ScopeTest, destroyedByItsOwnTaskLetsItRunToItsNextWait) {
  setUnhandledExceptionHandler([&](std::exception_ptr) { log.push_back("escaped"); });
  const struct {
    Then then;
    Lines expected;
  } cases[] = {{Then::End, {"closed, told", "ended"}},
               {Then::Wait, {"closed, told"}},
               {Then::Throw, {"closed, told", "escaped"}}};
  for (const auto work : {closing, closingBelow}) {
    for (const auto& [then, expected] : cases) {
      log.clear();
      owner = std::make_unique<Owner>();
      const TaskHandle handle = spawn(work(&owner, &log, then));
      spawn(line(&log, "sibling"));
      loop.runUntilIdle();
      EXPECT_TRUE(handle.done());
      EXPECT_EQ(held(), 0);
      loop.advance(1min);
      EXPECT_EQ(log, expected);
    }
  }
}

Task<void> holding(std::unique_ptr<Owner>) {
  co_await sleep(1h);
}

TEST_F(ScopeTest, endsWithinTheEndOfAnother) {
  for (int i = 0; i < 50; ++i) {
    auto outer = std::make_unique<Owner>();
    outer->scope.spawn(holding(std::move(owner)));
    owner = std::move(outer);
    loop.runUntilIdle();
  }
  EXPECT_EQ(held(), 50);
  owner.reset();
  EXPECT_EQ(held(), 0);
}

Task<int> keeping(std::shared_ptr<Owner>, Duration duration) {
  co_await sleep(duration);
  co_return 1;
}

Task<void> keepingInRoot(std::shared_ptr<Owner> owner, Duration duration) {
  co_await keeping(owner, duration);
}

Task<void> keepingInDeadline(std::shared_ptr<Owner> owner, Duration duration) {
  co_await withDeadline(1s, keeping(std::move(owner), duration));
}

// The end of the task is the end of its own scope.
TEST_F(ScopeTest, mayBeOwnedByItsOwnTask) {
  const struct {
    Task<void> (*work)(std::shared_ptr<Owner>, Duration);
    Duration duration;
  } cases[] = {{keepingInRoot, 1s}, {keepingInDeadline, 1s}, {keepingInDeadline, 2s}};
  for (const auto& [work, duration] : cases) {
    auto self = std::make_shared<Owner>();
    self->scope.spawn(work(self, duration));
    loop.runUntilIdle();
    self.reset();
    EXPECT_EQ(held(), 1);
    loop.advance(1s);
    EXPECT_EQ(held(), 0);
  }
}

Task<void> waiting(Future<int> future) {
  co_await std::move(future);
}

TEST_F(ScopeTest, spawnedWhileEndingNeverRuns) {
  auto [resolver, future] = makeFuture<int>();
  resolver.onAbandon([this, scope = &owner->scope] { scope->spawn(line(&log, "never")); });
  spawn(waiting(std::move(future)));
  loop.runUntilIdle();
  owner.reset();
  loop.runUntilIdle();
  EXPECT_TRUE(log.empty());
}

TEST_F(ScopeTest, handsEscapedExceptionsToTheHandler) {
  setUnhandledExceptionHandler([&](std::exception_ptr failure) {
    EXPECT_EQ(held(), 1) << "only the other task is left";
    EXPECT_THROW(std::rethrow_exception(failure), std::runtime_error);
    log.push_back("handled");
  });
  spawn(failing(1s));
  spawn(sleeper(&log, "other", 2s));
  loop.advance(2s);
  EXPECT_EQ(log, (Lines{"handled", "other slept"}));

  setUnhandledExceptionHandler({});
  spawn(failing(0s));
  EXPECT_DEATH(loop.runUntilIdle(), "escaped");
}

} // namespace
} // namespace ondrel::async
