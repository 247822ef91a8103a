#include "UserHandsTest.h"

namespace ondrel::e2e {
namespace {

using namespace std::chrono_literals;

using UserTest = UserHandsTest;

TEST_F(UserTest, OpensAConversationAndATabAndGetsThemBack) {
  {
    const auto program = start();
    ASSERT_TRUE(waitForPage(*program)) << program->output();
    focus("Sign in.*");
    press("Tab Return");
    ASSERT_TRUE(waitForPage(*program, 2)) << program->output();
    focus("Inbox.*");
    press("j");
    press("o");
    ASSERT_TRUE(sessionBecomes([](const auto& saved) {
      return saved.windows.at(0).tabs.at(0).urlString.contains("/mail/Inbox/T1.");
    })) << read(sessionFile());
    press("ctrl+plus");
    press("ctrl+t");
    ASSERT_TRUE(waitForPage(*program, 3)) << program->output();
    ASSERT_TRUE(sessionBecomes([](const auto& saved) { return saved.windows.at(0).tabs.size() == 2; }));
    press("ctrl+shift+Tab");
    EXPECT_EQ(quit(*program), 0);
  }
  const auto before = session();
  ASSERT_TRUE(before);
  ASSERT_EQ(before->windows.at(0).tabs.size(), 2U);
  EXPECT_DOUBLE_EQ(before->windows[0].tabs[0].pageZoom, 1.05);
  EXPECT_DOUBLE_EQ(before->windows[0].tabs[1].pageZoom, 1.0);

  const auto again = start();
  ASSERT_TRUE(waitForPage(*again)) << again->output();
  EXPECT_TRUE(again->output().contains("/mail/Inbox/T1.")) << "the conversation comes back";
  focus(".*");
  // Its history too: back leads to the list.
  press("alt+Left");
  EXPECT_TRUE(sessionBecomes([](const auto& saved) {
    return saved.windows.at(0).tabs.at(0).urlString.ends_with("/mail/Inbox/?u=demo");
  })) << read(sessionFile());
  EXPECT_EQ(quit(*again), 0);
  EXPECT_EQ(session()->windows.at(0).tabs.at(1), before->windows[0].tabs[1])
      << "and nobody has looked at the other tab";
}

TEST_F(UserTest, AnUnsentLetterIsAskedAboutBeforeItGoes) {
  const auto program = start();
  const auto main = signIn(*program);
  ASSERT_NE(main, 0U);
  press("c");
  ASSERT_TRUE(eventually([&] { return title(main) == "New message"; }));
  type("nadia@example.org");
  const auto ask = [&](const std::string& keys, const std::string& answer) {
    focus(main);
    press(keys);
    focus("Leave this page.*");
    press(answer);
  };
  ask("ctrl+w", "Escape");
  ask("ctrl+q", "Return"); // Stay is the default
  EXPECT_TRUE(eventually([&] { return windows() == std::set<WindowId>{main}; }));
  EXPECT_TRUE(program->isRunning());
  EXPECT_EQ(title(main), "New message");
  ask("ctrl+q", "Tab Return");
  EXPECT_EQ(program->wait(20s), 0);
  EXPECT_EQ(session()->windows.size(), 1U) << "what the end closes belongs to the session";
}

TEST_F(UserTest, ClosingTheLastWindowLeavesItRunningAndAStartReopensIt) {
  const auto program = start();
  ASSERT_TRUE(waitForPage(*program)) << program->output();
  focus(".*");
  press("ctrl+w");
  ASSERT_TRUE(sessionBecomes([](const auto& saved) { return saved.windows.empty(); }));
  EXPECT_TRUE(program->isRunning());
  const auto second = start();
  EXPECT_EQ(second->wait(20s), 0);
  EXPECT_TRUE(waitForPage(*program, 2)) << program->output();
  EXPECT_EQ(quit(*program), 0);
}

} // namespace
} // namespace ondrel::e2e
