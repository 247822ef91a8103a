// Letters in windows of their own, and what they owe to their text.
#include "UserHandsTest.h"

#include <chrono>

namespace ondrel::e2e {
namespace {

using namespace std::chrono_literals;
namespace json = boost::json;
using Clock = std::chrono::steady_clock;

class PageIntegrationTest : public UserHandsTest {
 protected:
  // After signing in, with the setting that gives each new message a window of its own. The page learns of it
  // some time after it has loaded: pressed too early, the key opens the editor in the page, whose title tells
  // it, and the user goes back and presses again.
  WindowId openComposeWindow() {
    write(defaultsFile(), R"({"_composeInNewWindow": true})");
    program = start();
    main = signIn(*program);
    WindowId opened = 0;
    eventually([&] {
      const auto before = windows();
      press("c");
      if (!eventually([&] { return windows() != before || title(main) == "New message"; }))
        return false;
      if (windows() == before) {
        press("Escape");
        eventually([&] { return title(main) == "Inbox"; });
        return false;
      }
      opened = windowBeside(before);
      return true;
    });
    // Its last script says this when the page has drawn its editor and the other scripts have been over it.
    EXPECT_TRUE(opened != 0 &&
                eventually([&] { return program->output().contains(std::string(composeAddress) + "\n"); }))
        << program->output();
    focus(opened);
    return opened;
  }

  // What stands before it was the page's address when its scripts came.
  static constexpr auto composeAddress = "/compose?u=demo&ui=minimal";

  std::unique_ptr<Process> program;
  WindowId main = 0;
};

TEST_F(PageIntegrationTest, AMessageThatTakesLongIsSent) {
  const auto compose = openComposeWindow();
  EXPECT_TRUE(eventually([&] { return title(compose) == "New message"; })) << title(compose);
  EXPECT_TRUE(sessionBecomes([&](const auto& saved) {
    return saved.windows.size() == 2 && saved.windows[1].tabs.at(0).urlString.ends_with(composeAddress) &&
           !saved.windows[1].tabs[0].toolbarVisible;
  })) << read(sessionFile());
  // The cursor is in the recipient's field.
  type("nadia@example.org");
  press("Tab");
  type("Keys");
  order("/control/fail", {{"path", "/data/send"}, {"kind", "delay"}, {"milliseconds", 4000}});
  const auto sent = Clock::now();
  press("ctrl+Return");
  EXPECT_TRUE(eventually([&] { return windows() == std::set{main}; }));
  EXPECT_GE(Clock::now() - sent, 1s) << "the time of grace";
  EXPECT_TRUE(eventually([&] { return requests("/data/send") == 1; }));
  EXPECT_FALSE(eventually([&] { return session()->windows.size() == 1; }, 2s)) << "its page lives";
  EXPECT_TRUE(sessionBecomes([](const auto& saved) { return saved.windows.size() == 1; }));
  EXPECT_GE(Clock::now() - sent, 4s);
  EXPECT_EQ(quit(*program), 0);
}

TEST_F(PageIntegrationTest, ALetterThatIsNotSentComesBack) {
  const auto compose = openComposeWindow();
  type("nadia@example.org");
  press("Tab");
  type("Keys");
  const auto refused = [](int milliseconds) {
    return json::object{
        {"path", "/data/send"}, {"kind", "status"}, {"status", 500}, {"milliseconds", milliseconds}};
  };
  const auto isThere = [&] { return windows().contains(compose); };
  // At once, which leaves the window, and late, which brings it back.
  order("/control/fail", refused(0));
  press("ctrl+Return");
  EXPECT_FALSE(eventually([&] { return !isThere(); }, 3s));
  order("/control/fail", refused(2500));
  press("ctrl+Return");
  EXPECT_TRUE(eventually([&] { return !isThere(); }));
  EXPECT_TRUE(eventually(isThere)) << "with the letter";

  // A quit of the user's waits for the next try.
  focus(compose);
  order("/control/fail", {{"path", "/data/send"}, {"kind", "delay"}, {"milliseconds", 3000}});
  const auto sent = Clock::now();
  press("ctrl+Return");
  EXPECT_TRUE(eventually([&] { return !isThere(); }));
  focus(main);
  press("ctrl+q");
  EXPECT_EQ(program->wait(20s), 0);
  EXPECT_GE(Clock::now() - sent, 3s);
  EXPECT_EQ(session()->windows.size(), 1U);
}

TEST_F(PageIntegrationTest, APopupOfThePageIsAWindow) {
  program = start();
  main = signIn(*program);
  press("j o");
  ASSERT_TRUE(eventually([&] { return title(main) == "Plans for the spring workshop"; })) << title(main);
  const auto before = windows();
  click(main, -27, 78); // the last button of the conversation's bar
  const auto popup = windowBeside(before);
  ASSERT_NE(popup, 0U);
  EXPECT_TRUE(eventually([&] { return title(popup) == "Plans for the spring workshop"; })) << title(popup);
  EXPECT_EQ(requests("/mail/Inbox/T1.M4"), 1) << "the engine has loaded it, and nobody else";
  // Its own scripts tell its title, and the opener keeps its own.
  focus(popup);
  press("j");
  EXPECT_TRUE(eventually([&] { return title(popup) == "Minutes of the garden society"; })) << title(popup);
  EXPECT_EQ(title(main), "Plans for the spring workshop");
  EXPECT_EQ(quit(*program), 0);
}

} // namespace
} // namespace ondrel::e2e
