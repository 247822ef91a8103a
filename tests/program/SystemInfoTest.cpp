#include "program/SystemInfoManager.h"

#include <gmock/gmock.h>

namespace ondrel::program {
namespace {

using namespace std::chrono_literals;

TEST(SystemInfoTest, TellsOfTheProgramAndTheMachine) {
  const std::chrono::sys_seconds start{1000s};
  const SystemInfoManager manager({}, {"Debian 12", "Fast CPU", "Box 3", 8, 15.625, start, true});
  EXPECT_THAT(manager.description(start + 1h),
              testing::HasSubstr("-\nUnknown name No version\nDebian 12\nFast CPU - Box 3 [8] 15.62 GB\n"
                                 "System uptime: 1 hour\nSandboxed: true\n-"));
  EXPECT_EQ(hoursMinutesAndSeconds(0s), "0 seconds");
  EXPECT_EQ(hoursMinutesAndSeconds(7201s), "2 hours, 0 minutes, 1 second");
}

} // namespace
} // namespace ondrel::program
