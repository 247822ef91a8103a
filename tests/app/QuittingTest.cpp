#include "app/Quitting.h"
#include "app/CloseQuestion.h"
#include "support/TestShell.h"

#include <gtest/gtest.h>

#include <optional>

namespace ondrel::app {
namespace {

using namespace std::chrono_literals;

// A program that is asked to quit, with a letter under way or none.
struct LetterAndQuit {
  explicit LetterAndQuit(bool hasLetter, async::Duration answerTakes = 1h, int button = 0) {
    shell.start();
    shell.panels.alertTakes = answerTakes;
    shell.panels.alertAnswer = platform::Panels::firstButton + button;
    model = shell.focusedModel();
    model->letterIsLeaving.set(hasLetter);
    ended = shell.application.aboutToQuit.subscribe([this] { ++ends; });
    question.emplace(*shell.manager, shell.panels, shell.runningDownloads);
    quitting.emplace(shell.application, *shell.manager, *question, shell.panels);
    quitting->request();
    shell.settle();
  }
  // With its window.
  void letterLeaves() {
    model.reset();
    shell.application.all.front()->close();
    shell.settle();
  }
  void letterComesBack() {
    model->letterIsLeaving.set(false);
    shell.settle();
  }

  support::TestShell shell;
  std::shared_ptr<web::WindowViewModel> model;
  int ends = 0;
  base::Subscription ended;
  std::optional<CloseQuestion> question;
  std::optional<Quitting> quitting;
};

TEST(QuitTest, WaitsForLettersAndSaysSoAfterAWhile) {
  EXPECT_EQ(LetterAndQuit(false).ends, 1);
  for (const auto takes : {2900ms, 10000ms}) {
    for (const bool leaves : {true, false}) {
      LetterAndQuit test(true);
      test.shell.loop.advance(takes);
      EXPECT_EQ(test.ends, 0);
      EXPECT_EQ(test.shell.panels.alerts.size(), takes < 3s ? 0U : 1U);
      leaves ? test.letterLeaves() : test.letterComesBack();
      EXPECT_EQ(test.ends, leaves ? 1 : 0) << "a letter that came back calls it off";
      test.shell.loop.advance(2h);
      EXPECT_EQ(test.ends, leaves ? 1 : 0) << "and the question has gone";
    }
  }
}

TEST(QuitTest, RestartsOnlyWhenItEnds) {
  for (const bool leaves : {true, false}) {
    LetterAndQuit test(true);
    test.letterComesBack();
    test.model->letterIsLeaving.set(true);
    test.quitting->requestRestart();
    test.shell.settle();
    leaves ? test.letterLeaves() : test.letterComesBack();
    EXPECT_EQ(test.quitting->restarts(), leaves);
  }
}

TEST(QuitTest, TheUserDecidesAboutALetterThatTakesLong) {
  for (const int button : {0, 1}) {
    LetterAndQuit test(true, 1s, button);
    test.shell.loop.advance(10s);
    EXPECT_EQ(test.ends, button);
    test.letterLeaves();
    EXPECT_EQ(test.ends, button) << "answered once";
  }
}

} // namespace
} // namespace ondrel::app
