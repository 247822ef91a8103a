#include "app/FocusManager.h"
#include "app/ProgramVisibility.h"
#include "support/TestShell.h"

#include <gtest/gtest.h>

namespace ondrel::app {
namespace {

using namespace std::chrono_literals;

TEST(FocusTest, HidesOnlyWhenNothingSpeaksAgainstIt) {
  struct Case {
    bool hides, hookmark, evenWhenComposing, composing, expected;
  };
  constexpr Case cases[] = {
      {true, false, false, false, true}, {false, false, false, false, false},
      {true, true, false, false, false}, {true, false, true, false, false},
      {true, false, false, true, false}, {true, false, true, true, false},
  };
  for (const auto& each : cases) {
    support::TestShell shell;
    shell.start();
    shell.settings.set(settings::keys::hideOnLoseFocus, each.hides);
    shell.settings.set(settings::keys::doHideWhenInComposeMode, each.evenWhenComposing);
    if (each.composing)
      shell.focusedModel()->urlString.set("https://app.example.com/mail/compose");
    FocusManager focus(shell.application, shell.manager->windows(), shell.settings,
                       [&each] { return each.hookmark; });
    EXPECT_EQ(*focus.showHideTitle, "Hide");
    shell.application.deactivated.emit();
    EXPECT_EQ(*focus.showHideTitle, "Show");
    EXPECT_EQ(shell.application.hidden, each.expected) << &each - cases;
    shell.application.activated.emit();
    EXPECT_EQ(*focus.showHideTitle, "Hide");
  }
}

TEST(VisibilityTest, TogglesAndNeverLeavesTheUserWithoutAWindow) {
  support::TestShell shell;
  shell.start();
  auto& application = shell.application;
  ProgramVisibility visibility(application, *shell.manager);
  visibility.toggleForeground(200ms);
  EXPECT_TRUE(application.hidden);
  visibility.toggleForeground(200ms);
  EXPECT_FALSE(application.hidden);
  shell.loop.advance(199ms);
  EXPECT_EQ(application.activations, 0);
  shell.loop.advance(1ms);
  EXPECT_EQ(application.activations, 1);

  visibility.toggle();
  visibility.toggleForeground(200ms);
  visibility.toggle();
  shell.loop.advance(1s);
  EXPECT_TRUE(application.hidden) << "the user was faster than the pause";
  EXPECT_EQ(application.activations, 1);

  visibility.toggleForeground();
  EXPECT_EQ(application.activations, 2);
  application.hidden = false;
  visibility.toggleForeground();
  EXPECT_TRUE(application.hidden);

  application.all.front()->close();
  shell.settle();
  visibility.toggle();
  EXPECT_FALSE(application.hidden);
  ASSERT_EQ(application.all.size(), 1U) << "nothing to hide";
  EXPECT_TRUE(application.all.front()->visible);
}

} // namespace
} // namespace ondrel::app
