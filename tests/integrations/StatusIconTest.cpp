#include "integrations/StatusIcon.h"
#include "app/FocusManager.h"
#include "app/ProgramVisibility.h"
#include "support/FakeStatusItem.h"
#include "support/TestShell.h"

#include <gtest/gtest.h>

namespace ondrel::integrations {
namespace {

using namespace std::chrono_literals;

TEST(StatusIconTest, FollowsTheSettingTheUnreadMailAndTheForeground) {
  support::TestShell shell;
  shell.start();
  auto& application = shell.application;
  shell.settings.set(settings::keys::showMenuBarExtra, false);
  app::FocusManager focus(application, shell.manager->windows(), shell.settings, [] { return false; });
  app::ProgramVisibility visibility(application, *shell.manager);
  support::FakeStatusItem item;
  int opened = 0;
  int appeared = 0;
  const StatusIcon icon({.item = item,
                         .settings = shell.settings,
                         .focus = focus,
                         .visibility = visibility,
                         .displayName = "Ondrel",
                         .openSettings = [&] { ++opened; },
                         .appeared = [&] { ++appeared; }});
  EXPECT_FALSE(*item.isShown);
  EXPECT_EQ(appeared, 0);
  shell.settings.set(settings::keys::showMenuBarExtra, true);
  EXPECT_TRUE(*item.isShown);
  EXPECT_EQ(appeared, 1);

  using Face = platform::StatusItem::Face;
  EXPECT_EQ(item.face, (Face{false, "Ondrel", "No unread mail", ""}));
  shell.settings.unreadCount.set(1);
  EXPECT_EQ(item.face, (Face{true, "Ondrel: 1 unread mail", "1 unread mail", "1"}));
  shell.settings.unreadCount.set(1234);
  EXPECT_EQ(item.face, (Face{true, "Ondrel: 1234 unread mails", "1234 unread mails", "1234"}));

  ASSERT_EQ(item.rows.size(), 2U);
  EXPECT_EQ(item.rows[0].title, "Hide Ondrel");
  EXPECT_EQ(item.rows[1].title, "Settings");
  item.rows[0].perform();
  EXPECT_TRUE(application.hidden);
  application.deactivated.emit();
  EXPECT_EQ(item.rows[0].title, "Show Ondrel");
  item.rows[0].perform();
  EXPECT_FALSE(application.hidden);
  shell.loop.advance(200ms);
  EXPECT_EQ(application.activations, 1);
  const auto window = std::exchange(application.key, nullptr);
  item.rows[0].perform();
  shell.loop.advance(200ms);
  EXPECT_FALSE(application.hidden) << "visible behind another, it shows itself as its row says";
  EXPECT_EQ(application.activations, 2);
  application.setKey(window);
  item.activated.emit();
  EXPECT_TRUE(application.hidden);
  item.rows[1].perform();
  EXPECT_EQ(opened, 1);
}

} // namespace
} // namespace ondrel::integrations
