#include "AsyncTest.h"

#include "async/Timer.h"

// What the tests of every delay rely on.
namespace ondrel::async {
namespace {

class VirtualEventLoopTest : public AsyncTest {
 protected:
  Callback note(std::string line) {
    return [this, line = std::move(line)] { log.push_back(line); };
  }
  EventLoop::TimerId in(Duration delay, Callback callback) {
    return loop.schedule(loop.now() + delay, std::move(callback));
  }
};

TEST_F(VirtualEventLoopTest, RunsPostsBeforeTimersAndTimersOfOneInstantInOrder) {
  const auto other = in(2s, note("cancelled"));
  in(2s, note("late"));
  in(1s, [&] {
    log.push_back("first");
    loop.cancel(other);
    loop.post(note("posted by first"));
    loop.schedule(TimePoint{}, note("in the past"));
  });
  in(1s, note("second"));
  in(0s, note("now"));
  loop.post(note("posted"));
  EXPECT_TRUE(log.empty());
  loop.runUntilIdle();
  EXPECT_EQ(log, (Lines{"posted", "now"}));

  log.clear();
  loop.advance(1500ms);
  EXPECT_EQ(log, (Lines{"first", "posted by first", "second", "in the past"}));
  EXPECT_EQ(loop.now(), TimePoint{1500ms});
  EXPECT_FALSE(loop.runUntil([] { return false; }, Duration::max())); // ends, for nothing is left
  in(10s, note("beyond"));
  EXPECT_FALSE(loop.runUntil([&] { return log.back() == "beyond"; }, 9s));
  EXPECT_EQ(loop.now(), TimePoint{11s});
  EXPECT_TRUE(loop.runUntil([&] { return log.back() == "beyond"; }, 1min));
  EXPECT_EQ(loop.now(), TimePoint{12s});
}

TEST_F(VirtualEventLoopTest, ATimerThatIsReplacedNeverComes) {
  loop.advance(1s);
  Timer timer(1s, note("replaced"));
  timer = Timer(2s, note("kept"));
  const Timer never(Duration::max(), note("at the end of time"));
  loop.advance(1h);
  EXPECT_EQ(log, Lines{"kept"});
}

} // namespace
} // namespace ondrel::async
