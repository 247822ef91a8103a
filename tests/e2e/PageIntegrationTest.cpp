// The page as a native window: composing beside it, popups, titles.
#include "UserHandsTest.h"

#include <chrono>
#include <cstdlib>
#include <utility>

namespace ondrel::e2e {
namespace {

using namespace std::chrono_literals;
namespace json = boost::json;
using Clock = std::chrono::steady_clock;

class PageIntegrationTest : public UserHandsTest {
 protected:
  // Signs in with the setting that gives each new message a window of its own.
  void startComposing() {
    write(defaultsFile(), R"({"_composeInNewWindow": true})");
    program = start();
    main = signIn(*program);
  }

  // By the key. The page learns of the setting some time after it has loaded: pressed too early, the key
  // opens the editor in the page, whose title tells it, and the user goes back and presses again.
  WindowId openComposeWindow() {
    WindowId opened = 0;
    focus(main);
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
      opened = composeWindowBeside(before);
      return true;
    });
    EXPECT_NE(opened, 0U) << program->output();
    return opened;
  }

  // Comes when its page may be used, with the keyboard.
  WindowId composeWindowBeside(const std::set<WindowId>& before) {
    const auto opened = windowBeside(before);
    // Its last script says this when the page has drawn its editor and the other scripts have been over it.
    ++composed_;
    EXPECT_TRUE(eventually([&] {
      return count(program->output(), std::string(composeAddress) + "\n") == composed_;
    })) << program->output();
    if (opened != 0)
      focus(opened);
    return opened;
  }

  // What shows at the foot of the page area right of the mailboxes, as pixels; the link under the pointer is
  // told there.
  std::string footOf(WindowId window) const {
    const auto id = std::to_string(window);
    const auto image = (profile / "foot.rgb").string();
    const auto command =
        "import -window " + id + " -crop 800x20+60+744 -depth 8 'rgb:" + image + "' >/dev/null 2>&1";
    return std::system(command.c_str()) == 0 ? read(image) : "";
  }

  // What stands before it was the page's address when its scripts came.
  static constexpr auto composeAddress = "/compose?u=demo&ui=minimal";

  // Not before the time of grace has passed since, and only this window.
  void expectClosed(WindowId window, Clock::time_point since, std::chrono::milliseconds grace) {
    EXPECT_TRUE(eventually([&] { return !windows().contains(window); })) << "the window must close";
    EXPECT_GE(Clock::now() - since, grace);
    EXPECT_EQ(windows(), std::set<WindowId>{main});
  }

  std::unique_ptr<Process> program;
  WindowId main = 0;

 private:
  std::size_t composed_ = 0;
};

// In a page reduced to the editor, nothing but this stands between the recipient and the button.
constexpr auto toDiscard = "shift+Tab shift+Tab";

TEST_F(PageIntegrationTest, AMessageThatTakesLongIsSent) {
  startComposing();
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
  expectClosed(compose, sent, 1s);
  EXPECT_TRUE(eventually([&] { return requests("/data/send") == 1; }));
  EXPECT_FALSE(eventually([&] { return session()->windows.size() == 1; }, 2s)) << "its page lives";
  EXPECT_TRUE(sessionBecomes([](const auto& saved) { return saved.windows.size() == 1; }));
  EXPECT_GE(Clock::now() - sent, 4s);
  EXPECT_EQ(quit(*program), 0);
}

TEST_F(PageIntegrationTest, ALetterThatIsNotSentComesBack) {
  startComposing();
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

TEST_F(PageIntegrationTest, DiscardingClosesTheComposeWindowUnlessItIsUndone) {
  startComposing();
  const auto compose = openComposeWindow();
  type("nadia@example.org");
  // Back to the button; then the toast's own is the only one that can be reached.
  press(std::string(toDiscard) + " space Tab space");
  EXPECT_FALSE(eventually([&] { return !windows().contains(compose); }, 3s)) << "it was undone in time";

  // The editor works again.
  const auto discarded = Clock::now();
  press("shift+Tab shift+Tab shift+Tab space");
  expectClosed(compose, discarded, 1500ms);
  EXPECT_EQ(requests("/data/send"), 0);

  // The button of the page opens one too.
  focus(main);
  const auto before = windows();
  click(main, 35, 133);
  const auto second = composeWindowBeside(before);
  ASSERT_NE(second, 0U);
  const auto discardedToo = Clock::now();
  press(std::string(toDiscard) + " space");
  expectClosed(second, discardedToo, 1500ms);
  EXPECT_EQ(quit(*program), 0);
}

TEST_F(PageIntegrationTest, TitleAndHoveredLinkFollowThePage) {
  program = start();
  main = signIn(*program);
  press("j o");
  EXPECT_TRUE(eventually([&] { return title(main) == "Plans for the spring workshop"; })) << title(main);
  press("j");
  EXPECT_TRUE(eventually([&] { return title(main) == "Minutes of the garden society"; })) << title(main);
  press("u");
  EXPECT_TRUE(eventually([&] { return title(main) == "Inbox"; })) << title(main);

  // On the empty part beside the list, on the link that composes, and away again.
  moveTo(main, 600, 500);
  std::string foot;
  EXPECT_TRUE(eventually([&] {
    auto now = footOf(main);
    return !now.empty() && std::exchange(foot, now) == now;
  }));
  moveTo(main, 35, 133);
  EXPECT_TRUE(eventually([&] { return footOf(main) != foot; })) << "the address must show";
  moveTo(main, 600, 500);
  EXPECT_TRUE(eventually([&] { return footOf(main) == foot; })) << "and go";
  EXPECT_EQ(quit(*program), 0);
}

TEST_F(PageIntegrationTest, PopupsOfThePageAreWindowsAndTabs) {
  program = start();
  main = signIn(*program);
  press("j o");
  ASSERT_TRUE(eventually([&] { return title(main) == "Plans for the spring workshop"; })) << title(main);

  // The last button of the conversation's bar opens its address, below "/mail/".
  const auto before = windows();
  click(main, -27, 78);
  const auto popup = windowBeside(before);
  ASSERT_NE(popup, 0U);
  EXPECT_TRUE(eventually([&] { return title(popup) == "Plans for the spring workshop"; })) << title(popup);
  EXPECT_EQ(requests("/mail/Inbox/T1.M4"), 1) << "the engine has loaded it, and nobody else";
  // Its own scripts tell its title, and the opener keeps its own.
  focus(popup);
  press("j");
  EXPECT_TRUE(eventually([&] { return title(popup) == "Minutes of the garden society"; })) << title(popup);
  EXPECT_EQ(title(main), "Plans for the spring workshop");
  press("ctrl+w");
  EXPECT_TRUE(eventually([&] { return !windows().contains(popup); }));

  // The settings open themselves, elsewhere on the service.
  focus(main);
  click(main, 35, 733);
  ASSERT_TRUE(eventually([&] { return title(main) == "General – Settings"; })) << title(main);
  EXPECT_EQ(requests("/settings/general"), 0);
  click(main, -187, 78);
  EXPECT_TRUE(sessionBecomes([&](const auto& saved) {
    return saved.windows.size() == 1 && saved.windows[0].tabs.size() == 2 &&
           saved.windows[0].tabs[1].urlString == address + "settings/general?u=demo" &&
           saved.windows[0].tabs[1].title == "General – Settings";
  })) << read(sessionFile());
  EXPECT_EQ(requests("/settings/general"), 1);
  EXPECT_EQ(quit(*program), 0);
}

} // namespace
} // namespace ondrel::e2e
