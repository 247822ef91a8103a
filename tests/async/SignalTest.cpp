#include "AsyncTest.h"

#include "async/Signal.h"

namespace ondrel::async {
namespace {

Task<void> work(Signal* signal, Lines* log) {
  bool sent = co_await signal->wait();
  while (sent) {
    log->push_back("woken");
    for (int i = 0; i < 3 && log->size() == 1; ++i)
      signal->send(); // wanted thrice while it is busy for the first time
    sent = co_await signal->wait();
  }
  log->push_back("ended");
}

class SignalTest : public AsyncTest {
 protected:
  std::optional<Signal> signal{std::in_place};
};

TEST_F(SignalTest, FoldsSendsIntoOne) {
  signal->send(); // before anyone waits
  spawn(work(&*signal, &log));
  loop.runUntilIdle();
  EXPECT_EQ(log, (Lines{"woken", "woken"}));
  signal->send();
  signal->send();
  EXPECT_EQ(log.size(), 2u) << "resumed from inside send()";
  loop.runUntilIdle();
  EXPECT_EQ(log, (Lines{"woken", "woken", "woken"}));
  signal->send();
  signal.reset(); // between the send and the turn
  loop.runUntilIdle();
  EXPECT_EQ(log, (Lines{"woken", "woken", "woken", "ended"}));
}

TEST_F(SignalTest, KeepsWhatACancelledWorkerDidNotTake) {
  TaskHandle first = spawn(work(&*signal, &log));
  loop.runUntilIdle();
  signal->send();
  first.cancel();
  loop.runUntilIdle();
  EXPECT_EQ(log, Lines{"ended"});
  spawn(work(&*signal, &log));
  loop.runUntilIdle();
  EXPECT_EQ(log, (Lines{"ended", "woken"}));
  signal.reset();
  loop.runUntilIdle();
  EXPECT_EQ(log, (Lines{"ended", "woken", "ended"}));
}

} // namespace
} // namespace ondrel::async
