#include "platform/linux/windows/ActivityTracker.h"

#include "async/VirtualEventLoop.h"

#include <gtest/gtest.h>

#include <string>

namespace ondrel::platform {

namespace {

using namespace std::chrono_literals;

TEST(ActivityTracker, IgnoresTheMomentBetweenTwoWindowsAndPanels) {
  async::VirtualEventLoop loop;
  std::string log;
  bool inFront = false;
  windows::ActivityTracker tracker({.activated = [&] { log += "B"; },
                                    .deactivating = [&] { log += tracker.isActive() ? "W" : "?"; },
                                    .deactivated = [&] { log += tracker.isActive() ? "?" : "R"; },
                                    .isStillInFront = [&] { return inFront; }});
  tracker.update(false);
  loop.advance(1s);
  EXPECT_EQ(log, "");
  tracker.update(true);
  tracker.update(true);
  EXPECT_EQ(log, "B");

  tracker.update(false);
  loop.advance(windows::ActivityTracker::grace - 1ms);
  tracker.update(false); // doesn't begin the time anew
  EXPECT_TRUE(tracker.isActive());
  tracker.update(true);
  loop.advance(1s);
  EXPECT_EQ(log, "B");

  tracker.update(false);
  loop.advance(windows::ActivityTracker::grace - 1ms);
  tracker.update(false);
  loop.advance(1ms);
  EXPECT_EQ(log, "BWR");
  tracker.update(true);
  EXPECT_EQ(log, "BWRB");

  {
    tracker.update(false);
    const auto first = tracker.hold(); // when the keyboard is on its way to the panel already
    const auto second = tracker.hold();
    loop.advance(1h);
    tracker.update(true);
    tracker.update(false);
    loop.advance(1h);
  }
  loop.advance(windows::ActivityTracker::graceAfterPanel - 1ms);
  EXPECT_EQ(log, "BWRB") << "a panel of our own in another process";
  loop.advance(1ms);
  EXPECT_EQ(log, "BWRBWR") << "the keyboard didn't come back";

  tracker.update(true);
  inFront = true;
  tracker.update(false);
  loop.advance(10min);
  EXPECT_EQ(log, "BWRBWRB") << "a panel's menu, or the screen is locked";
  inFront = false;
  loop.advance(windows::ActivityTracker::longestGrace);
  EXPECT_EQ(log, "BWRBWRBWR");

  tracker.update(true);
  log.clear();
  auto held = tracker.hold();
  tracker.leave();
  tracker.update(false);
  loop.advance(1h);
  EXPECT_EQ(log, "WR") << "hidden with a panel open";

  held.reset();
  tracker.update(true);
  log.clear();
  tracker.lendKeyboard(5s);
  tracker.update(true); // not gone yet
  tracker.update(false);
  loop.advance(4s);
  tracker.update(true); // the menu has closed
  tracker.update(false);
  loop.advance(windows::ActivityTracker::grace);
  EXPECT_EQ(log, "WR") << "somebody else, in the usual time";
}

} // namespace

} // namespace ondrel::platform
