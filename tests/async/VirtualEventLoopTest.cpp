#include "AsyncTest.h"

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

TEST_F(VirtualEventLoopTest, runsPostsBeforeTimersAndTimersOfOneInstantInOrder) {
  in(2s, note("late"));
  in(1s, [this] {
    log.push_back("first");
    loop.post(note("posted by first"));
    loop.schedule(TimePoint{}, note("in the past"));
  });
  in(1s, note("second"));
  in(0s, note("now"));
  loop.post(note("posted"));
  loop.post(note("posted too"));
  EXPECT_TRUE(log.empty());

  loop.runUntilIdle();
  EXPECT_EQ(log, (Lines{"posted", "posted too", "now"}));
  EXPECT_EQ(loop.nextTimer(), TimePoint{1s});

  log.clear();
  loop.advance(1500ms);
  EXPECT_EQ(log, (Lines{"first", "posted by first", "second", "in the past"}));
  EXPECT_EQ(loop.now(), TimePoint{1500ms});
  EXPECT_FALSE(loop.runUntil([] { return false; }, Duration::max())); // ends, for nothing is left
  EXPECT_EQ(loop.now(), TimePoint{2s});
}

TEST_F(VirtualEventLoopTest, stopsAtEachTimerOnTheWay) {
  Lines seen;
  const auto look = [&] { seen.push_back(std::to_string(loop.now().time_since_epoch() / 1s)); };
  in(1s, [&] {
    look();
    in(1s, look);
    in(9s, look);
  });
  loop.advance(2s);
  EXPECT_EQ(seen, (Lines{"1", "2"}));
  EXPECT_FALSE(loop.runUntil([&] { return seen.size() == 3; }, 7s));
  EXPECT_EQ(loop.now(), TimePoint{9s});
  EXPECT_TRUE(loop.runUntil([&] { return seen.size() == 3; }, 1min));
  EXPECT_EQ(loop.now(), TimePoint{10s});
}

TEST_F(VirtualEventLoopTest, cancelsFromACallback) {
  EventLoop::TimerId self{}, other{};
  self = in(1s, [&] {
    log.push_back("ran");
    loop.cancel(self);
    loop.cancel(other);
    loop.cancel(EventLoop::TimerId{999});
  });
  other = in(1s, note("cancelled"));
  in(1s, note("kept"));
  loop.advance(1s);
  EXPECT_EQ(log, (Lines{"ran", "kept"}));
}

TEST_F(VirtualEventLoopTest, isCurrentForItsLifeAndDropsWhatIsLeft) {
  {
    VirtualEventLoop inner;
    EXPECT_EQ(&EventLoop::current(), &inner);
    inner.post([object = Held()] {});
    inner.schedule(TimePoint{1s}, [object = Held()] {});
    EXPECT_EQ(held(), 2);
  }
  EXPECT_EQ(held(), 0);
  EXPECT_EQ(&EventLoop::current(), &loop);
}

} // namespace
} // namespace ondrel::async
