#include "AsyncTest.h"

#include "async/Future.h"

namespace ondrel::async {
namespace {

Task<void> waitFor(Future<int> future, Lines* log) {
  const Held held;
  const std::optional<int> value = co_await std::move(future);
  log->push_back(value ? std::to_string(*value) : "none");
}

// A future, its resolver and the task that awaits it, and what can happen to them.
struct Stage {
  explicit Stage(Lines* lines) : log(lines) {
    auto [r, f] = makeFuture<int>();
    resolver.emplace(std::move(r));
    future.emplace(std::move(f));
    resolver->onAbandon([this] { log->push_back("abandoned"); });
  }

  Lines* log;
  std::optional<Resolver<int>> resolver;
  std::optional<Future<int>> future;
  TaskHandle handle;
  std::unique_ptr<Owner> owner = std::make_unique<Owner>();
};

using Step = void (*)(Stage&);
const Step await = [](Stage& s) { s.handle = s.owner->scope.spawn(waitFor(std::move(*s.future), s.log)); };
const Step turn = [](Stage&) { static_cast<VirtualEventLoop&>(EventLoop::current()).runUntilIdle(); };
const Step resolve = [](Stage& s) { s.resolver->resolve(1); };
const Step resolveAgain = [](Stage& s) { s.resolver->resolve(2); };
const Step dropResolver = [](Stage& s) { s.resolver.reset(); };
const Step replaceResolver = [](Stage& s) { s.resolver = makeFuture<int>().first; };
const Step dropFuture = [](Stage& s) { s.future.reset(); };
const Step cancel = [](Stage& s) { s.handle.cancel(); };
const Step endScope = [](Stage& s) { s.owner.reset(); };
const Step listenLate = [](Stage& s) { s.resolver->onAbandon([&s] { s.log->push_back("told late"); }); };
const Step dropWhenTold = [](Stage& s) {
  s.resolver->onAbandon([&s, object = Held()] { s.resolver.reset(); });
};

using FutureTest = AsyncTest;

// "-" stands after the last step: what comes before it happened inside of the steps.
TEST_F(FutureTest, IsAnsweredOnceAndAbandonedOnce) {
  const std::pair<std::vector<Step>, Lines> cases[] = {
      {{await, turn, resolve, resolveAgain, dropResolver}, {"-", "1"}},
      {{resolve, await}, {"-", "1"}},
      {{await, turn, dropResolver}, {"-", "none"}},
      {{await, turn, replaceResolver}, {"-", "none"}},
      {{await, turn, resolve, cancel}, {"-", "none"}},
      {{await, turn, resolve, endScope}, {"-"}},
      {{dropFuture, listenLate}, {"abandoned", "-", "told late"}},
      {{await, turn, endScope, resolve}, {"abandoned", "-"}},
      {{await, turn, cancel}, {"-", "abandoned", "none"}},
      {{await, turn, cancel, resolve}, {"-", "none"}},
      {{dropWhenTold, await, turn, endScope}, {"-"}},
  };
  for (std::size_t number = 0; number < std::size(cases); ++number) {
    SCOPED_TRACE(number);
    log.clear();
    Stage stage(&log);
    for (const auto step : cases[number].first)
      step(stage);
    log.push_back("-");
    EXPECT_TRUE(!stage.resolver || stage.resolver->abandoned());
    loop.runUntilIdle();
    EXPECT_EQ(log, cases[number].second);
    stage.owner.reset();
    EXPECT_EQ(held(), 0);
  }
}

} // namespace
} // namespace ondrel::async
