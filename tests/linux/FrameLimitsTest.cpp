#include "platform/linux/windows/FrameLimits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace ondrel::platform {

namespace {

constexpr Rect fallback{0, 0, 870, 768};
const std::vector<Rect> noMonitors;
const std::vector<Rect> two{{0, 0, 1920, 1080}, {1920, 200, 1280, 1024}};

struct Case {
  const char* name;
  Rect wanted;
  std::vector<Rect> monitors;
  Rect usable;
};

TEST(FrameLimits, MakeAnyFrameUsable) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double infinite = std::numeric_limits<double>::infinity();
  const Case cases[] = {
      {"a good one stays", {100, 50, 900, 700}, two, {100, 50, 900, 700}},
      {"partly off, but enough to grab", {-700, -20, 870, 768}, two, {-700, -20, 870, 768}},
      {"too little to grab", {-860, 20, 870, 768}, two, {0, 20, 870, 768}},
      {"below all", {100, 5000, 870, 768}, two, {100, 312, 870, 768}},
      {"far to the right goes to the nearer monitor", {9000, 500, 870, 700}, two, {2330, 500, 870, 700}},
      {"in the hole above the second monitor", {2000, -900, 870, 768}, two, {2000, 200, 870, 768}},
      {"larger than its monitor", {0, 0, 5000, 4000}, two, {0, 0, 1920, 1080}},
      {"numbers that are none", {nan, -infinite, nan, infinite}, two, {0, 0, 870, 768}},
      {"negative size", {10, 10, -5, 0}, two, {10, 10, 870, 768}},
      {"enormous without monitors",
       {1e9, -1e9, 1e9, 1e300},
       noMonitors,
       {100000, -100000, windows::largestSide, windows::largestSide}},
      {"a monitor smaller than the smallest window", {0, 0, 870, 768}, {{0, 0, 300, 200}}, {0, 0, 360, 294}},
  };
  for (const auto& [name, wanted, monitors, usable] : cases) {
    const auto frame = windows::usableFrame(wanted, fallback, monitors);
    EXPECT_EQ(frame, usable) << name << ": " << frame.x << "," << frame.y << " " << frame.width << "x"
                             << frame.height;
  }
}

} // namespace

} // namespace ondrel::platform
