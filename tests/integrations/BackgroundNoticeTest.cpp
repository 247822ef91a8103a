#include "integrations/BackgroundNotice.h"

#include "jmap/newmail/NotificationManager.h"
#include "support/FakeDesktopServices.h"
#include "support/TestShell.h"

#include <gtest/gtest.h>

namespace ondrel::integrations {
namespace {

TEST(BackgroundNoticeTest, TellsOnceThatTheProgramGoesOn) {
  support::TestShell shell;
  support::FakeBackgroundApplications background;
  std::vector<std::string> done;
  BackgroundNotice notice({.application = shell.application,
                           .settings = shell.settings,
                           .notificationCenter = shell.notificationCenter,
                           .notifications = shell.notifications,
                           .background = background,
                           .displayName = "Ondrel",
                           .show = [&] { done.emplace_back("show"); },
                           .quit = [&] { done.emplace_back("quit"); }});
  shell.start();
  const auto& sent = shell.notificationCenter.requests;
  const auto closeAll = [&] {
    while (!shell.application.all.empty())
      shell.application.all.front()->close();
    shell.settle();
  };
  shell.manager->openMainWindow();
  shell.application.all.front()->close();
  shell.settle();
  EXPECT_TRUE(background.told.empty()) << "there is another window";

  shell.notificationCenter.status = platform::AuthorizationStatus::denied;
  closeAll();
  EXPECT_EQ(background.told.size(), 1U);
  EXPECT_TRUE(sent.empty());
  shell.notificationCenter.status = platform::AuthorizationStatus::authorized;
  for (int i = 0; i < 2; ++i) {
    shell.manager->reopenWindow();
    closeAll();
  }
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_EQ(sent[0].content.title, "Ondrel runs in the background");
  shell.notificationCenter.respond(0, "quit");
  shell.notificationCenter.respond(0, "default");
  EXPECT_EQ(done, (std::vector<std::string>{"quit", "show"}));

  shell.settings.set(settings::keys::backgroundNoticeShown, false);
  shell.manager->reopenWindow();
  shell.application.aboutToQuit.emit();
  closeAll();
  EXPECT_EQ(sent.size(), 1U) << "it ends";
}

} // namespace
} // namespace ondrel::integrations
