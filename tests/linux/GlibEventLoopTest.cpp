#include "platform/linux/glib/GlibEventLoop.h"

#include <gtest/gtest.h>

#include <string>

namespace ondrel::glib {

namespace {

using namespace std::chrono_literals;

class GlibEventLoopTest : public testing::Test {
 protected:
  void runUntil(std::size_t length) {
    for (int i = 0; i < 1000 && log.size() < length; ++i)
      g_main_context_iteration(nullptr, TRUE);
  }
  async::Callback note(char letter) {
    return [this, letter] { log += letter; };
  }

  GlibEventLoop loop;
  std::string log;
};

TEST_F(GlibEventLoopTest, RunsTimersByTimeAndPostsByOrder) {
  const auto now = loop.now();
  loop.schedule(now + 20ms, note('3'));
  loop.schedule(now + 10ms, note('1'));
  loop.schedule(now + 10ms, note('2'));
  loop.schedule(now - 1h, note('0')); // late ones run at once, but not from inside schedule()
  loop.schedule(async::TimePoint(), note('0'));
  const auto never = loop.schedule(now + 5ms, note('x'));
  loop.cancel(never);
  loop.cancel(never);
  EXPECT_EQ(log, "");
  runUntil(5);
  EXPECT_EQ(log, "00123");
  EXPECT_GE(loop.now() - now, 20ms);

  log.clear();
  loop.post(note('a'));
  loop.post([this] {
    log += 'b';
    loop.post(note('d')); // the next turn
  });
  loop.post(note('c'));
  EXPECT_EQ(log, "");
  g_main_context_iteration(nullptr, TRUE);
  EXPECT_EQ(log, "abc");
  runUntil(4);
  EXPECT_EQ(log, "abcd");
}

TEST_F(GlibEventLoopTest, AllowsChangesFromItsCallbacks) {
  const auto now = loop.now();
  async::EventLoop::TimerId second{};
  loop.schedule(now, [&] {
    log += '1';
    loop.cancel(second);
    loop.schedule(now, note('3'));
  });
  second = loop.schedule(now, note('2'));
  loop.schedule(now + 10ms, note('4'));
  runUntil(3);
  EXPECT_EQ(log, "134");
}

TEST_F(GlibEventLoopTest, WakesASleepingContextForWhatIsScheduledLater) {
  loop.schedule(loop.now() + 1h, note('x'));
  g_idle_add_once(
      [](gpointer self) {
        auto& test = *static_cast<GlibEventLoopTest_WakesASleepingContextForWhatIsScheduledLater_Test*>(self);
        test.loop.schedule(test.loop.now() + 5ms, test.note('1')); // before the one that is armed
        test.loop.post(test.note('0'));
      },
      this);
  runUntil(2);
  EXPECT_EQ(log, "01");
}

} // namespace

} // namespace ondrel::glib
