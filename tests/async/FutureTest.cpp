#include "AsyncTest.h"

#include "async/Future.h"

namespace ondrel::async {
namespace {

Task<void> waitFor(Future<int> future, Lines* log) {
  const Held held;
  const std::optional<int> value = co_await std::move(future);
  log->push_back(value ? std::to_string(*value) : "none");
}

// One future in the hands of a task, its resolver, and what can happen to them.
struct Stage {
  explicit Stage(Lines* lines) : log(lines) {
    auto [r, f] = makeFuture<int>();
    resolver.emplace(std::move(r));
    future.emplace(std::move(f));
    resolver->onAbandon([this] { log->push_back("abandoned"); });
  }
  void await() { handle = owner->scope.spawn(waitFor(std::move(*future), log)); }
  void turn() { static_cast<VirtualEventLoop&>(EventLoop::current()).runUntilIdle(); }
  void awaitAndTurn() {
    await();
    turn();
  }
  void mark() { log->push_back("-"); }

  Lines* log;
  std::optional<Resolver<int>> resolver;
  std::optional<Future<int>> future;
  TaskHandle handle;
  std::unique_ptr<Owner> owner = std::make_unique<Owner>();
};

struct Case {
  const char* name;
  void (*play)(Stage&);
  Lines expected;
};

class FutureTest : public AsyncTest, public testing::WithParamInterface<Case> {};

// "-" marks the end of the last call: what stands before it happened inside of it.
TEST_P(FutureTest, plays) {
  {
    Stage stage(&log);
    GetParam().play(stage);
    stage.mark();
    loop.runUntilIdle();
    EXPECT_EQ(log, GetParam().expected);
    EXPECT_TRUE(!stage.resolver || stage.resolver->abandoned());
  }
  EXPECT_EQ(held(), 0);
}

const Case cases[] = {
    {"firstAnswerCounts",
     [](Stage& s) {
       s.awaitAndTurn();
       s.resolver->resolve(1);
       s.resolver->resolve(2);
       s.resolver.reset();
     },
     {"-", "1"}},
    {"answeredBeforeItIsAwaited",
     [](Stage& s) {
       s.resolver->resolve(3);
       s.await();
     },
     {"-", "3"}},
    {"resolverDropped",
     [](Stage& s) {
       s.awaitAndTurn();
       Resolver<int> moved = std::move(*s.resolver);
       s.turn();
       s.mark();
       auto [other, unused] = makeFuture<int>();
       moved = std::move(other); // replacing it drops it
       s.resolver.reset();
     },
     {"-", "-", "none"}},
    {"cancelledAfterTheAnswer",
     [](Stage& s) {
       s.awaitAndTurn();
       s.resolver->resolve(1);
       s.handle.cancel();
     },
     {"-", "none"}},
    {"scopeGoesAfterTheAnswer",
     [](Stage& s) {
       s.awaitAndTurn();
       s.resolver->resolve(1);
       s.owner.reset();
     },
     {"-"}},
    {"futureDropped",
     [](Stage& s) {
       s.future.reset();
       s.resolver->onAbandon([&s] { s.log->push_back("registered late"); });
     },
     {"abandoned", "-", "registered late"}},
    {"resolverOutlivesTheFrame",
     [](Stage& s) {
       s.awaitAndTurn();
       s.owner.reset();
       EXPECT_TRUE(s.resolver->abandoned());
       s.resolver->resolve(1);
     },
     {"abandoned", "-"}},
    {"cancellationIsToldOnALaterTurn",
     [](Stage& s) {
       s.awaitAndTurn();
       s.handle.cancel();
       EXPECT_TRUE(s.resolver->abandoned());
     },
     {"-", "abandoned", "none"}},
    {"answeredBeforeCancellationIsTold",
     [](Stage& s) {
       s.awaitAndTurn();
       s.handle.cancel();
       s.resolver->resolve(1);
     },
     {"-", "none"}},
    {"resolverGoesWhileItIsTold",
     [](Stage& s) {
       s.resolver->onAbandon([&s, object = Held()] { s.resolver.reset(); });
       s.awaitAndTurn();
       s.owner.reset();
     },
     {"-"}},
};

INSTANTIATE_TEST_SUITE_P(Cases, FutureTest, testing::ValuesIn(cases),
                         [](const auto& info) { return info.param.name; });

} // namespace
} // namespace ondrel::async
