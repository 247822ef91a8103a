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

TEST_F(ScopeTest, StartsTasksInOrderOnALaterTurn) {
  loop.post([&] { log.push_back("posted before"); });
  spawn(line(&log, "first"));
  spawn(line(&log, "second"));
  EXPECT_TRUE(log.empty());
  loop.runUntilIdle();
  EXPECT_EQ(log, (Lines{"posted before", "first", "second"}));

  spawn(line(&log, "never"));
  owner->scope.cancelAll();
  EXPECT_EQ(owner->scope.active(), 1u);
  loop.runUntilIdle();
  EXPECT_EQ(owner->scope.active(), 0u);
  const TaskHandle late = spawn(line(&log, "never"));
  owner.reset();
  EXPECT_TRUE(late.done());
  loop.runUntilIdle();
  EXPECT_EQ(log.size(), 3u);
}

enum class Then { End, Wait, Throw };

// Destroys the owner of the scope that it runs in.
Task<int> closing(std::unique_ptr<Owner>* owner, Lines* log, Then then) {
  const Held held;
  owner->reset();
  const bool told = co_await cancelled();
  log->push_back(told ? "closed, told" : "closed");
  if (then == Then::Throw)
    throw std::runtime_error("after the end");
  if (then == Then::Wait)
    co_await sleep(1s);
  log->push_back("ended");
  co_return 1;
}

Task<void> closingBelow(std::unique_ptr<Owner>* owner, Lines* log, Then then) {
  const Held held;
  co_await closing(owner, log, then);
  co_await nextTurn();
  log->push_back("went on");
}

Task<void> closingWithin(std::unique_ptr<Owner>* owner, Lines* log, Then then) {
  const Held held;
  co_await withDeadline(1s, closing(owner, log, then));
  log->push_back("went on");
}

TEST_F(ScopeTest, DestroyedByItsOwnTaskLetsItRunToItsNextWait) {
  setUnhandledExceptionHandler([&](std::exception_ptr) { log.push_back("escaped"); });
  const struct {
    Task<void> (*work)(std::unique_ptr<Owner>*, Lines*, Then);
    Then then;
    Lines expected;
  } cases[] = {{closingBelow, Then::End, {"closed, told", "ended"}},
               {closingBelow, Then::Wait, {"closed, told"}},
               {closingBelow, Then::Throw, {"closed, told", "escaped"}},
               {closingWithin, Then::End, {"sibling", "closed, told", "ended"}},
               {closingWithin, Then::Wait, {"sibling", "closed, told"}}};
  for (const auto& [work, then, expected] : cases) {
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
TEST_F(ScopeTest, MayBeOwnedByItsOwnTask) {
  for (const auto work : {keepingInRoot, keepingInDeadline})
    for (const Duration duration : {1s, 2s}) {
      auto self = std::make_shared<Owner>();
      self->scope.spawn(work(self, duration));
      loop.runUntilIdle();
      self.reset();
      EXPECT_EQ(held(), 1);
      loop.advance(2s);
      EXPECT_EQ(held(), 0);
    }
}

Task<void> waiting(Future<int> future) {
  const Held held;
  co_await std::move(future);
}

TEST_F(ScopeTest, SpawnedWhileEndingNeverRuns) {
  auto [resolver, future] = makeFuture<int>();
  resolver.onAbandon([this, scope = &owner->scope] { scope->spawn(line(&log, "never")); });
  spawn(waiting(std::move(future)));
  loop.runUntilIdle();
  EXPECT_EQ(held(), 1);
  owner.reset();
  loop.runUntilIdle();
  EXPECT_TRUE(log.empty());
}

Task<void> failing(Duration after) {
  const Held held;
  co_await sleep(after);
  throw std::runtime_error("escaped");
}

TEST_F(ScopeTest, HandsEscapedExceptionsToTheHandler) {
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
