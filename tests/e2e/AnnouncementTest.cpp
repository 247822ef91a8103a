#include "UserHandsTest.h"

namespace ondrel::e2e {
namespace {

using AnnouncementTest = UserHandsTest;

TEST_F(AnnouncementTest, OnceClosedItStaysAwayUnlessItIsCritical) {
  const auto expectRun = [this](const std::string& shown, bool closes) {
    order("/control/fail", {{"path", "/announcement.json"}, {"kind", "delay"}, {"milliseconds", 1500}});
    const auto program = start();
    EXPECT_TRUE(waitForPage(*program)) << program->output();
    EXPECT_TRUE(eventually([&] { return program->output().contains("Announcement: " + shown + "\n"); }))
        << program->output();
    EXPECT_TRUE(!closes || eventually([&] {
      click(*windows().begin(), -35, 70); // it slides into its place
      return read(defaultsFile()).contains("\"_dismissedAnnouncementID\": \"" + shown + "\"");
    })) << read(defaultsFile());
    EXPECT_EQ(quit(*program), 0);
  };
  order("/control/announcement", {{"id", "first"}, {"message", "News"}, {"severity", "info"}});
  expectRun("first", true);
  expectRun("none", false);
  order("/control/announcement", {{"id", "second"}, {"message", "News"}, {"severity", "critical"}});
  expectRun("second", true);
  expectRun("second", false);
}

} // namespace
} // namespace ondrel::e2e
