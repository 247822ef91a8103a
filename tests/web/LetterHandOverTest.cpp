#include "CoordinatorTest.h"

namespace ondrel::web {
namespace {

using namespace std::chrono_literals;

// A letter in the only window. The page lives as long as its web view: closing the window ends its requests,
// which a web view that records what it is asked doesn't tell by itself.
class LetterHandOverTest : public CoordinatorTest {
 protected:
  void SetUp() override {
    CoordinatorTest::SetUp();
    takeWindow();
  }
  void openNext() {
    shell.manager->openMainWindow();
    shell.settle();
    model = shell.focusedModel();
    view = shell.webView(model);
    takeWindow();
  }
  void takeWindow() {
    model->webViewConfiguration = shell.scripts.composeConfiguration();
    window = shell.application.last();
    page = view;
  }

  void says(const std::string& word) {
    view->answer = [word](const std::string& source) -> platform::ScriptResult {
      return source.contains("letterStateScript") ? boost::json::value(word) : boost::json::value();
    };
  }
  void send() { post({{"type", "sendClicked"}}); }
  void discard() { post({{"type", "discardClicked"}}); }
  bool isShown() const { return !window->closed && !window->withdrawn; }

  std::shared_ptr<support::FakeWindow> window;
  std::weak_ptr<support::FakeWebView> page;
};

TEST_F(LetterHandOverTest, ThePageLivesUntilItHasLetGo) {
  const struct {
    const char* type;
    async::Duration grace;
    const char* last;
    async::Duration settling;
  } cases[] = {{"sendClicked", 1s, "sent", 2s},
               {"sendClicked", 1s, "gone", 5s},
               {"discardClicked", 1500ms, "gone", 5s}};
  for (const auto& each : cases) {
    says("busy");
    post({{"type", each.type}});
    shell.loop.advance(900ms);
    post({{"type", each.type}});
    EXPECT_TRUE(shell.manager->windows().hasLettersUnderWay()) << "in the grace too";
    shell.loop.advance(each.grace - 1ms);
    EXPECT_TRUE(isShown()) << "a second click starts the grace anew";
    shell.loop.advance(1ms);
    EXPECT_TRUE(window->withdrawn);
    EXPECT_EQ(shell.manager->windows().activeWindow(), std::nullopt);
    EXPECT_FALSE(shell.manager->windows().hasComposeWindow());
    EXPECT_EQ(shell.manager->session().snapshot().windows.size(), 1U)
        << "until it has left it may be lost with us";
    shell.loop.advance(40s);
    EXPECT_FALSE(window->closed) << "closing it would end the request";
    says(each.last);
    view.reset();
    shell.loop.advance(each.settling + 500ms);
    EXPECT_TRUE(window->closed);
    EXPECT_TRUE(page.expired());
    EXPECT_FALSE(shell.manager->windows().hasLettersUnderWay());
    EXPECT_TRUE(model->notice->empty());
    openNext();
  }
}

TEST_F(LetterHandOverTest, TheWindowComesBackWithTheLetter) {
  const struct {
    const char* what;
    std::string first;
    std::string then; // after ten seconds
    async::Duration within;
    bool isTold;
  } cases[] = {
      {"refused", "busy", "failed", 1s, false},      {"refused without a word", "busy", "open", 1s, false},
      {"asked", "busy", "asking", 1s, false},        {"signed out", "busy", "absent", 6s, true},
      {"never answered", "busy", "busy", 51s, true}, {"an editor that stays", "open", "open", 51s, true},
      {"no word of it", "", "", 51s, true},
  };
  for (const auto& each : cases) {
    says(each.first);
    send();
    shell.loop.advance(10s);
    EXPECT_TRUE(window->withdrawn) << each.what;
    says(each.then);
    shell.loop.advance(each.within);
    EXPECT_TRUE(isShown()) << each.what;
    EXPECT_EQ(shell.application.key, window) << each.what;
    EXPECT_EQ(!model->notice->empty(), each.isTold) << each.what;
    EXPECT_FALSE(shell.manager->windows().hasLettersUnderWay()) << each.what;
    // What the user does with it now is theirs to say.
    says("gone");
    shell.loop.advance(70s);
    if (std::string(each.what) == "asked") {
      EXPECT_TRUE(window->closed) << "answered, it went";
      openNext();
    }
    EXPECT_TRUE(isShown()) << each.what;
  }

  send();
  shell.loop.advance(2s);
  engine().webProcessDidTerminate(true);
  shell.loop.advance(1s);
  EXPECT_TRUE(isShown());
  EXPECT_FALSE(model->notice->empty());
  model->pageProblem.set({});

  view->hangs = true;
  send();
  shell.loop.advance(5s);
  EXPECT_TRUE(window->withdrawn) << "also when it says nothing";
  shell.loop.advance(60s);
  EXPECT_TRUE(isShown());
}

TEST_F(LetterHandOverTest, AFailureInTheGraceLeavesTheWindow) {
  says("failed");
  send();
  shell.loop.advance(10s);
  EXPECT_EQ(window->calls, (Calls{"mode 2", "key", "mode 1"})) << "it never went";
  EXPECT_TRUE(model->notice->empty());
}

TEST_F(LetterHandOverTest, ABoxOfTheEngineIsAnsweredBeforeAnythingElse) {
  for (const bool inGrace : {true, false}) {
    says("busy");
    send();
    shell.loop.advance(inGrace ? 100ms : 3s);
    view->hangs = true; // the box holds up the page
    engine().runConfirmPanel("No attachment. Send?", {[](bool) {}, false});
    shell.loop.advance(100s);
    EXPECT_TRUE(isShown()) << "as long as the user needs";
    EXPECT_FALSE(shell.manager->windows().hasLettersUnderWay()) << "it can't be waited for";
    view->hangs = false;
    shell.loop.advance(2s);
    EXPECT_TRUE(window->withdrawn) << "it is on its way now";
    shell.loop.advance(50s);
    EXPECT_TRUE(window->withdrawn) << "and has its whole time again";
    says("open");
    shell.loop.advance(1s);
    EXPECT_TRUE(isShown());
  }
}

TEST_F(LetterHandOverTest, ADiscardIsTakenBackAtAnyTime) {
  const auto undo = [this] { post({{"type", "discardUndone"}}); };
  says("busy");
  undo();
  for (const auto when : {1400ms, 5000ms}) {
    discard();
    shell.loop.advance(when);
    undo();
    EXPECT_TRUE(isShown());
    shell.loop.advance(70s);
    EXPECT_TRUE(isShown());
    EXPECT_TRUE(model->notice->empty());
  }
  send();
  shell.loop.advance(500ms);
  undo(); // the action of another toast
  shell.loop.advance(1s);
  EXPECT_TRUE(window->withdrawn);
}

TEST_F(LetterHandOverTest, AWindowThatClosesIsNoMatter) {
  send();
  discard();
  window->close();
  shell.manager->openMainWindow();
  view.reset();
  shell.loop.advance(100s);
  EXPECT_EQ(windows(), 1U) << "another window is none of its business";
  EXPECT_FALSE(shell.manager->windows().hasLettersUnderWay());
}

} // namespace
} // namespace ondrel::web
