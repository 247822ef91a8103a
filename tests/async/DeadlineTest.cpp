#include "AsyncTest.h"

#include "async/Deadline.h"
#include "async/Future.h"
#include "async/Timer.h"

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

Task<void> outer(Future<int> future, Lines* log) {
  (void)co_await sleep(1s);
  try {
    const std::optional<std::string> result = co_await withDeadline(2s, inner(std::move(future), log));
    EXPECT_EQ(Held::alive, 1) << "something of the inner task is left";
    log->push_back(result.value_or("nothing"));
  } catch (const std::runtime_error& error) {
    log->push_back(error.what());
  }
}

using DeadlineTest = AsyncTest;

TEST_F(DeadlineTest, GivesTheResultTheFailureOrNothing) {
  const struct {
    Duration answeredAfter;
    int answer;
    Duration cancelledAfter;
    Duration endsAfter;
    Lines expected;
  } cases[] = {
      {2s, 1, 1h, 2s, {"begun", "value"}},   {2s, 0, 1h, 2s, {"begun", "zero"}},
      {4s, 1, 1h, 3s, {"begun", "nothing"}}, {1h, 1, 2s, 2s, {"begun", "told"}},
      {1h, 1, 0s, 0s, {"nothing"}}, // cancelled before the inner task began
  };
  for (const auto& row : cases) {
    log.clear();
    auto [resolver, future] = makeFuture<int>();
    const TimePoint start = loop.now();
    TaskHandle handle = spawn(outer(std::move(future), &log));
    const Timer answering(row.answeredAfter, [&resolver, &row] { resolver.resolve(row.answer); });
    const Timer cancelling(row.cancelledAfter, [&] { handle.cancel(); });
    EXPECT_TRUE(loop.runUntil([&] { return handle.done(); }, 1h));
    EXPECT_EQ(loop.now(), start + row.endsAfter);
    EXPECT_EQ(log, row.expected);
    EXPECT_EQ(held(), 0);
    EXPECT_TRUE(resolver.abandoned());
  }
}

} // namespace
} // namespace ondrel::async
