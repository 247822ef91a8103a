#include "app/CloseQuestion.h"

#include "app/Quitting.h"
#include "support/TestShell.h"
#include "web/page/DownloadItem.h"

#include <gtest/gtest.h>

namespace ondrel::app {
namespace {

using namespace std::chrono_literals;
using Strings = std::vector<std::string>;

// Three tabs that were all looked at. The fake web view closed without a word before: it had neither pages
// that keep their user nor ones that hang.
class CloseQuestionTest : public testing::Test {
 protected:
  void SetUp() override {
    shell.start();
    shell.manager->newTab();
    shell.manager->newTab();
    question.emplace(*shell.manager, shell.panels, shell.runningDownloads);
    quitting.emplace(shell.application, *shell.manager, *question, shell.panels);
    shell.application.setCloseQuestion([this](std::vector<std::shared_ptr<platform::Window>> windows) {
      return question->mayClose(windows);
    });
    ended = shell.application.aboutToQuit.subscribe([this] { ++ends; });
  }
  std::shared_ptr<support::FakeWebView> page(std::size_t index) {
    return shell.webView(shell.manager->windows().viewModel(shell.application.all.at(index)));
  }
  void answer(bool leave) { shell.panels.alertAnswer = platform::Panels::firstButton + (leave ? 1 : 0); }
  std::size_t windows() const { return shell.application.all.size(); }

  support::TestShell shell;
  std::optional<CloseQuestion> question;
  std::optional<Quitting> quitting;
  base::Subscription ended;
  int ends = 0;
};

TEST_F(CloseQuestionTest, OnlyAPageThatKeepsItsUserIsAskedAbout) {
  shell.application.all.at(2)->requestClose();
  shell.settle();
  EXPECT_EQ(windows(), 2U);
  EXPECT_TRUE(shell.panels.alerts.empty());

  page(0)->keepsUser = true;
  answer(false);
  shell.application.all.at(0)->requestClose();
  shell.settle();
  EXPECT_EQ(windows(), 2U);
  ASSERT_EQ(shell.panels.alerts.size(), 1U);
  EXPECT_EQ(shell.panels.alerts[0].buttons, (Strings{"Stay", "Leave"}));
  EXPECT_EQ(shell.panels.alerts[0].escapeButton, "Stay");
  EXPECT_EQ(shell.application.key, shell.application.all.at(0)) << "the user sees which page it is about";
  const auto kept = page(0);
  EXPECT_EQ(*kept->leaveAnswers, (std::vector{false}));

  answer(true);
  shell.application.all.at(0)->requestClose();
  shell.settle();
  EXPECT_EQ(windows(), 1U);
  EXPECT_EQ(*kept->leaveAnswers, (std::vector{false, true}));
  shell.application.all.at(0)->close();
  EXPECT_EQ(windows(), 0U) << "who closes without asking is not held up";
}

TEST_F(CloseQuestionTest, QuittingAsksOnceForAll) {
  page(0)->keepsUser = page(2)->keepsUser = true;
  answer(false);
  quitting->request();
  shell.settle();
  EXPECT_EQ(ends, 0);
  EXPECT_EQ(shell.panels.alerts.size(), 1U);
  answer(true);
  quitting->request();
  quitting->request();
  shell.settle();
  EXPECT_EQ(ends, 1);
  EXPECT_EQ(shell.panels.alerts.size(), 2U);
  EXPECT_EQ(*page(2)->leaveAnswers, (std::vector{false, true}));
  EXPECT_EQ(page(1)->closeQuestions, 2);
}

// They ended with the program, without a word.
TEST_F(CloseQuestionTest, QuittingNamesTheDownloadsThatWouldEnd) {
  using Kind = web::DownloadState::Kind;
  std::vector<std::shared_ptr<web::DownloadItem>> items;
  for (const auto& [name, kind] :
       std::vector<std::pair<std::string, Kind>>{{"a\u202E.zip", Kind::downloading},
                                                 {"b.pdf", Kind::waiting},
                                                 {"c", Kind::waiting},
                                                 {"d", Kind::waiting}}) {
    items.push_back(std::make_shared<web::DownloadItem>(name, "/downloads/" + name, kind, [] {}));
    shell.runningDownloads.add(items.back());
  }
  answer(false);
  shell.application.all.at(2)->requestClose();
  shell.settle();
  EXPECT_TRUE(shell.panels.alerts.empty()) << "they go on without their window";
  const auto asked = [&] {
    quitting->request();
    shell.settle();
    EXPECT_EQ(shell.panels.alerts.back().escapeButton, "Cancel");
    return shell.panels.alerts.back().informativeText;
  };
  EXPECT_EQ(asked(), "“a.zip”, “b.pdf” and 2 more files are still being downloaded. "
                     "If you quit now, nothing of them is kept.");
  items[1]->cancel();
  items[3]->markFailed("disk full");
  EXPECT_TRUE(asked().starts_with("“a.zip” and “c” are still"));
  items[2]->markFinished();
  page(0)->keepsUser = true;
  EXPECT_EQ(asked(), "“a.zip” is still being downloaded. If you quit now, nothing of it is kept. "
                     "Changes that you made may not be saved.");
  EXPECT_EQ(shell.panels.alerts.size(), 3U) << "one question for both";
  EXPECT_EQ(*page(0)->leaveAnswers, (std::vector{false}));
  EXPECT_EQ(ends, 0);
  answer(true);
  asked();
  EXPECT_EQ(ends, 1);
  EXPECT_EQ(*page(0)->leaveAnswers, (std::vector{false, true}));
}

TEST_F(CloseQuestionTest, WishesAreAskedAboutInTurn) {
  page(0)->keepsUser = true;
  page(1)->hangs = true;
  answer(false);
  shell.application.all.at(1)->requestClose();
  shell.application.all.at(0)->requestClose();
  quitting->request();
  shell.loop.advance(2900ms);
  EXPECT_EQ(page(0)->closeQuestions, 0) << "a page that waits for one answer would miss the second question";
  shell.loop.advance(20s);
  EXPECT_EQ(windows(), 2U);
  EXPECT_EQ(ends, 0);
  EXPECT_EQ(shell.panels.alerts.size(), 2U);
}

TEST_F(CloseQuestionTest, AHungPageHoldsUpNoEndForLong) {
  page(1)->hangs = true;
  quitting->request();
  shell.loop.advance(2900ms);
  EXPECT_EQ(ends, 0);
  shell.loop.advance(200ms);
  EXPECT_EQ(ends, 1);
}

// The tab closes by itself while its user is being asked about it.
TEST_F(CloseQuestionTest, ATabMayGoMeanwhile) {
  page(1)->hangs = page(1)->keepsUser = true;
  page(0)->keepsUser = true;
  answer(true);
  quitting->request();
  shell.loop.advance(1s);
  shell.application.all.at(0)->close();
  shell.settle();
  shell.loop.advance(5s);
  EXPECT_EQ(ends, 1);
}

} // namespace
} // namespace ondrel::app
