// A tab's dialogs and its hanging. The fake panels answered every question at once, which hid that a page's
// dialogs locked all tabs: these stay until somebody answers.
#include "CoordinatorTest.h"

namespace ondrel::web {
namespace {

using namespace std::chrono_literals;
using Kind = PageProblem::Kind;

class PageDialogsTest : public CoordinatorTest {
 protected:
  void SetUp() override {
    CoordinatorTest::SetUp();
    view->currentUrl = "https://app.example.com:8443/mail/";
  }

  platform::DoneReply reply() {
    return {[to = answers](bool value) { to->push_back(value ? "yes" : "no"); }, false};
  }
  platform::PromptReply promptReply() {
    return {[to = answers](const std::optional<std::string>& text) { to->push_back(text.value_or("none")); },
            std::nullopt};
  }
  std::shared_ptr<const PageDialog> dialog() { return *model->dialogs.shown; }
  void press(std::size_t button, const std::string& text = "", bool silence = false) {
    ASSERT_TRUE(dialog());
    const auto asked = dialog();
    asked->answer({button, text, silence});
    asked->answer({button, text, silence}); // counts for nothing
  }
  Calls taken() { return std::exchange(*answers, {}); }

  // Outlives the test: the tab answers what is open when it goes.
  std::shared_ptr<Calls> answers = std::make_shared<Calls>();
};

TEST_F(PageDialogsTest, AnswerThePageAndNameWhoAsks) {
  engine().runAlertPanel("Told", reply());
  EXPECT_EQ(dialog()->heading, "app.example.com:8443 says");
  EXPECT_EQ(dialog()->text, "Told");
  EXPECT_EQ(dialog()->buttons, (Calls{"OK"}));
  EXPECT_TRUE(answers->empty()) << "the page waits";
  press(0);
  EXPECT_EQ(taken(), (Calls{"yes"}));
  EXPECT_FALSE(dialog());

  for (const std::size_t button : {0U, 1U}) {
    engine().runConfirmPanel("Really?", reply());
    EXPECT_EQ(dialog()->buttons, (Calls{"Yes", "No"}));
    EXPECT_EQ(dialog()->escapeButton, 1U);
    press(button);
    engine().runPromptPanel("Name?", "Jane", promptReply());
    EXPECT_EQ(dialog()->field, "Jane");
    press(button, "Joe");
    engine().runBeforeUnloadPanel(reply());
    EXPECT_EQ(dialog()->heading + "|" + dialog()->text,
              "Leave this page?|Changes that you made may not be saved");
    EXPECT_EQ(dialog()->buttons, (Calls{"Stay", "Leave"}));
    EXPECT_EQ(dialog()->escapeButton, 0U);
    press(button);
  }
  EXPECT_EQ(taken(), (Calls{"yes", "Joe", "no", "no", "none", "yes"}));

  engine().runAlertPanel(std::string(1'000'000, 'x'), reply());
  EXPECT_LT(dialog()->text.size(), 3000U);
  model->window.lock()->close();
  shell.settle();
  EXPECT_EQ(taken(), (Calls{"no"})) << "a tab that goes answers safely";
}

TEST_F(PageDialogsTest, CanBeEndedFromTheSecondOneOn) {
  const auto ask = [this] { engine().runConfirmPanel("More?", reply()); };
  ask();
  EXPECT_FALSE(dialog()->offersSilence);
  press(0);
  ask();
  EXPECT_TRUE(dialog()->offersSilence);
  press(0, "", true);
  taken();
  ask();
  EXPECT_FALSE(dialog());
  EXPECT_EQ(taken(), (Calls{"no"}));
  engine().didCommit(); // it has loaded itself again
  ask();
  EXPECT_FALSE(dialog());
  engine().runBeforeUnloadPanel(reply());
  EXPECT_TRUE(dialog()) << "the user's own text is another matter";
  press(0);

  model->reload();
  ask();
  ASSERT_TRUE(dialog()) << "the user has loaded it again";
  EXPECT_FALSE(dialog()->offersSilence);
  press(0);
  ask();
  press(0, "", true);
  for (int i = 0; i < PageDialogs::flood; ++i)
    ask();
  EXPECT_EQ(model->pageProblem->kind, Kind::unresponsive)
      << "the engine takes a page that asks for a live one";
  view->currentUrl = "https://other.example/";
  engine().didCommit();
  ask();
  EXPECT_TRUE(dialog()) << "another site is another page";
}

TEST_F(PageDialogsTest, MakeWayForTheQuestionOfClosing) {
  engine().runConfirmPanel("Discard?", reply());
  view->keepsUser = true;
  std::optional<bool> kept;
  const auto close = [](auto tab, auto* result) -> async::Task<void> {
    const auto objection = co_await tab->tryClose();
    *result = objection.has_value();
  };
  async::Scope scope;
  scope.spawn(close(model, &kept));
  shell.settle();
  EXPECT_EQ(taken(), (Calls{"no"})) << "a page that waits couldn't answer";
  EXPECT_EQ(kept, true);
  EXPECT_EQ(*view->leaveAnswers, (std::vector{false})) << "a dropped question lets nothing go";
  engine().runConfirmPanel("Again?", reply());
  EXPECT_TRUE(dialog());
}

TEST_F(PageDialogsTest, PrintPanelsComeOneAtATime) {
  view->printsFor = 5s;
  for (int i = 0; i < 100; ++i)
    post({{"type", "print"}});
  shell.loop.advance(10s);
  EXPECT_EQ(view->prints.size(), 1U);
  post({{"type", "print"}});
  shell.settle();
  EXPECT_EQ(view->prints.size(), 2U);
}

TEST_F(PageDialogsTest, AHungPageIsToldAfterEightSeconds) {
  view->setHangs(true); // the engine has waited for 3 s
  shell.loop.advance(4s);
  view->setHangs(false);
  shell.loop.advance(2s);
  EXPECT_EQ(model->pageProblem->kind, Kind::none) << "it has come back in time";
  view->setHangs(true);
  shell.loop.advance(4s);
  EXPECT_EQ(model->pageProblem->kind, Kind::none);
  shell.loop.advance(1s);
  EXPECT_EQ(model->pageProblem->kind, Kind::unresponsive);
  model->hangWatch.wait();
  EXPECT_EQ(model->pageProblem->kind, Kind::none);
  shell.loop.advance(8s);
  EXPECT_EQ(model->pageProblem->kind, Kind::unresponsive);
  view->setHangs(false);
  EXPECT_EQ(model->pageProblem->kind, Kind::none) << "it has come back by itself";

  view->setHangs(true);
  shell.loop.advance(8s);
  view->loads.clear();
  model->urlString.set("https://app.example.com/mail/x");
  model->reload();
  EXPECT_EQ(view->terminations, 1);
  EXPECT_EQ(view->loads, (Calls{"https://app.example.com/mail/x"}));
  shell.loop.advance(60s);
  EXPECT_EQ(model->pageProblem->kind, Kind::none);
}

} // namespace
} // namespace ondrel::web
