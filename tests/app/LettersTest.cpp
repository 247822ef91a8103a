#include "support/TestShell.h"

#include <gtest/gtest.h>

namespace ondrel::app {
namespace {

using Calls = std::vector<std::string>;

const std::string service = "https://app.example.com/";
const std::string message = service + "mail/Inbox/T.M";

// What a window shows: of the first three nothing is lost.
enum Kind { home, settings, mail, composePage, composeWindow, reply, leaving };

struct World {
  explicit World(const std::vector<Kind>& kinds) {
    shell.start();
    for (std::size_t i = 1; i < kinds.size(); ++i)
      shell.manager->openMainWindow();
    shell.settle();
    for (std::size_t i = 0; i < kinds.size(); ++i) {
      constexpr const char* paths[] = {"mail/",
                                       "settings/",
                                       "mail/Inbox/",
                                       "mail/Inbox/compose?u=1",
                                       "mail/compose&ui=minimal",
                                       "mail/Inbox/T1.M1",
                                       "mail/compose&ui=minimal"};
      const auto& window = shell.application.all.at(i);
      const auto model = shell.manager->windows().viewModel(window);
      model->urlString.set(service + paths[kinds[i]]);
      model->reportsWriting = kinds[i] == reply;
      if (kinds[i] == composeWindow || kinds[i] == leaving)
        model->webViewConfiguration = shell.scripts.composeConfiguration();
      if (kinds[i] == leaving)
        window->withdraw();
      shell.webView(model)->loads.clear();
    }
  }

  std::shared_ptr<web::WindowViewModel> model(std::size_t index) {
    return shell.manager->windows().viewModel(shell.application.all.at(index));
  }
  const Calls& loads(std::size_t index) { return shell.webView(model(index))->loads; }

  support::TestShell shell;
};

TEST(LettersTest, NothingFromOutsideLeadsALetterElsewhere) {
  struct Case {
    std::vector<Kind> windows; // the last one has the keyboard
    int forMessage;            // which window takes it; -1 for a new one
    int forActive;             // the same for the active window; -1 for none
    int neighbour = -1;        // the new one is a tab beside it
  };
  const Case cases[] = {
      {{mail, mail}, 0, 1},
      {{composePage, mail}, 1, 1},
      {{mail, composePage}, 0, 0},
      {{reply, settings, mail}, 2, 2},
      {{composeWindow, settings}, 1, 1},
      {{composeWindow}, -1, -1},
      {{composeWindow, reply}, -1, -1, 1},
      {{reply}, -1, -1, 0},
      {{leaving}, -1, -1},
      {{mail, leaving}, 0, 0},
      {{settings, reply, leaving}, 0, 0},
  };
  for (const auto& each : cases) {
    for (const bool isMessage : {true, false}) {
      World world(each.windows);
      const auto count = each.windows.size();
      const auto expected = isMessage ? each.forMessage : each.forActive;
      const auto shown = isMessage ? world.shell.manager->addresses().openURL(message)
                                   : world.shell.manager->addresses().loadInActiveWindow(message);
      world.shell.settle();
      const auto name = testing::PrintToString(each.windows) + (isMessage ? " message" : " active");
      for (std::size_t i = 0; i < count; ++i)
        EXPECT_EQ(world.loads(i), (static_cast<int>(i) == expected ? Calls{message} : Calls{})) << name;
      const bool isNew = isMessage && expected < 0;
      EXPECT_EQ(world.shell.application.all.size(), count + (isNew ? 1 : 0)) << name;
      EXPECT_EQ(shown != nullptr, isNew || expected >= 0) << name;
      if (!isNew)
        continue;
      EXPECT_EQ(world.model(count), shown) << name;
      EXPECT_EQ(world.loads(count), (Calls{message})) << name;
      const auto opened = world.shell.application.last();
      EXPECT_EQ(world.shell.application.key, opened) << name;
      EXPECT_EQ(opened->tabGroup() != nullptr, each.neighbour >= 0) << name;
      if (each.neighbour >= 0)
        EXPECT_EQ(opened->group, world.shell.application.all.at(std::size_t(each.neighbour))->group) << name;
    }
  }
}

TEST(LettersTest, ALetterStaysWithItsServiceAndSaysSo) {
  World world({mail, composePage, composeWindow, reply});
  world.shell.settings.setEnvironment(settings::FastmailEnvironment::beta);
  world.shell.settings.fastmailEnvironmentDidChange.emit();
  world.shell.settle();
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(world.loads(i), i == 0 ? Calls{"https://beta.example.com/"} : Calls{}) << i;
    EXPECT_EQ(!world.model(i)->notice->empty(), i != 0) << i;
  }
}

TEST(LettersTest, AWindowOffTheScreenIsNotTheLastOne) {
  World world({mail, leaving});
  world.shell.application.all[0]->setFrame({1, 2, 333, 444});
  world.shell.application.all[0]->close();
  world.shell.settle();
  world.shell.application.all[0]->close();
  world.shell.settle();
  EXPECT_EQ(world.shell.manager->lastClosedWindowFrame(), (platform::Rect{1, 2, 333, 444}));
}

} // namespace
} // namespace ondrel::app
