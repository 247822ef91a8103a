#include "AsyncTest.h"

#include "async/Deadline.h"
#include "async/Future.h"

#include <stdexcept>

namespace ondrel::async {
namespace {

Task<std::string> inner(Future<int> future, Lines* log) {
  const Held held;
  log->push_back("begun");
  const std::optional<int> value = co_await std::move(future);
  if (value == 0)
    throw std::runtime_error("zero");
  co_return value ? "value" : "told";
}

Task<void> outer(Duration limit, Future<int> future, Lines* log) {
  try {
    const std::optional<std::string> result = co_await withDeadline(limit, inner(std::move(future), log));
    EXPECT_EQ(Held::alive, 1) << "something of the inner task is left";
    log->push_back(result.value_or("nothing"));
  } catch (const std::runtime_error& error) {
    log->push_back(error.what());
  }
}

class DeadlineTest : public AsyncTest {
 protected:
  TaskHandle begin(Duration limit) {
    log.clear();
    auto [r, future] = makeFuture<int>();
    resolver.emplace(std::move(r));
    return spawn(outer(limit, std::move(future), &log));
  }
  void expectEnd(std::string result) {
    EXPECT_EQ(log, (Lines{"begun", std::move(result)}));
    EXPECT_EQ(held(), 0);
    EXPECT_EQ(loop.pendingTimers(), 0u);
    EXPECT_TRUE(resolver->abandoned());
  }

  std::optional<Resolver<int>> resolver;
};

TEST_F(DeadlineTest, givesTheResultTheFailureOrNothing) {
  const struct {
    Duration after;
    bool scheduledFirst;
    int answer;
    const char* expected;
  } cases[] = {
      {1s, false, 1, "value"}, {1s, false, 0, "zero"},    {3s, false, 1, "nothing"},
      {2s, true, 1, "value"},  {2s, false, 1, "nothing"}, // both timers at the same instant: the first one
                                                          // decides
  };
  for (const auto& row : cases) {
    const TimePoint end = loop.after(row.after);
    const auto answer = [&] { resolver->resolve(row.answer); };
    if (row.scheduledFirst)
      loop.schedule(end, answer);
    begin(2s);
    loop.runUntilIdle();
    if (!row.scheduledFirst)
      loop.schedule(end, answer);
    loop.runUntil([&] { return log.size() == 2; }, 1min);
    EXPECT_EQ(loop.now(), std::min(end, end - row.after + 2s));
    loop.advance(1min);
    expectEnd(row.expected);
  }
}

TEST_F(DeadlineTest, passesCancellationOnAndGivesWhatTheInnerTaskMakesOfIt) {
  TaskHandle handle = begin(1h);
  loop.runUntilIdle();
  handle.cancel();
  EXPECT_EQ(log, Lines{"begun"});
  loop.runUntilIdle();
  expectEnd("told");
}

Task<void> outerAfterATurn(Future<int> future, Lines* log) {
  co_await nextTurn();
  co_await outer(1h, std::move(future), log);
}

TEST_F(DeadlineTest, neverBeginsTheInnerTaskOfACancelledOne) {
  auto [r, future] = makeFuture<int>();
  TaskHandle handle = spawn(outerAfterATurn(std::move(future), &log));
  loop.post([&] { handle.cancel(); });
  loop.runUntilIdle();
  EXPECT_EQ(log, Lines{"nothing"});
}

Task<int> closing(std::unique_ptr<Owner>* owner, Lines* log) {
  const Held held;
  owner->reset();
  log->push_back("closed");
  co_await nextTurn();
  log->push_back("went on");
  co_return 1;
}

Task<void> closingWithin(std::unique_ptr<Owner>* owner, Lines* log) {
  const Held held;
  co_await withDeadline(1s, closing(owner, log));
  log->push_back("went on");
}

// The inner task closes what owns the outer one: both go, the inner one once it waits.
TEST_F(DeadlineTest, mayBeEndedByItsOwnInnerTask) {
  spawn(closingWithin(&owner, &log));
  loop.advance(1min);
  EXPECT_EQ(log, Lines{"closed"});
}

} // namespace
} // namespace ondrel::async
