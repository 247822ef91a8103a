#include "CoordinatorTest.h"

namespace ondrel::web {
namespace {

using Outcome = PageSearch::State::Outcome;

class PageSearchTest : public CoordinatorTest {
 protected:
  const PageSearch::State& now() { return *model->search.state; }
  Calls calls() { return std::exchange(view->pageFinder.calls, {}); }
};

TEST_F(PageSearchTest, FollowsTheTextAndThePage) {
  auto& search = model->search;
  int asked = 0;
  const auto asking = search.asked.subscribe([&] { ++asked; });
  search.next();
  EXPECT_TRUE(asked == 1 && now().isOpen && calls().empty()) << "there is nothing to look for yet";
  view->pageFinder.matches = 17;
  search.setText("f");
  search.setText("fo");
  EXPECT_EQ(now().outcome, Outcome::searching) << "the answer is late";
  shell.settle();
  EXPECT_TRUE(now().outcome == Outcome::found && now().matches == 17);
  search.previous();
  EXPECT_EQ(calls(), (Calls{"find f", "find fo", "previous"}));

  // The user shall never see the matches of another page, or of a text that is gone.
  view->goTo("https://app.example.com/mail/x");
  EXPECT_EQ(now().outcome, Outcome::none);
  shell.settle();
  EXPECT_EQ(now().outcome, Outcome::none) << "an answer from before";
  search.previous();
  EXPECT_EQ(calls(), (Calls{"find fo", "previous"})) << "marked anew first";
  search.setText("");
  shell.settle();
  EXPECT_EQ(now().outcome, Outcome::none);
  view->pageFinder.matches = 0;
  search.setText("no");
  shell.settle();
  EXPECT_EQ(now().outcome, Outcome::notFound);

  search.close();
  EXPECT_FALSE(now().isOpen);
  EXPECT_EQ(calls(), (Calls{"finish", "find no", "finish"}));
  search.next();
  EXPECT_TRUE(now().isOpen && asked == 1) << "on with the last text, the keyboard stays with the page";
  engine().webProcessDidTerminate(true);
  EXPECT_FALSE(now().isOpen);
}

TEST_F(PageSearchTest, LeavesNoMarksInADocumentWhoseAddressHasChanged) {
  model->search.ask();
  model->search.setText("fo");
  view->goTo("https://app.example.com/mail/x");
  model->search.close();
  EXPECT_EQ(calls(), (Calls{"find fo", "finish"}));
}

} // namespace
} // namespace ondrel::web
