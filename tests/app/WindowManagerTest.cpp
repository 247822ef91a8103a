#include "support/TestShell.h"

#include "web/page/MailURL.h"

#include <boost/json/value.hpp>
#include <gtest/gtest.h>

namespace ondrel::app {
namespace {

using namespace std::chrono_literals;
using platform::KeyEvent;
using platform::Modifiers;
using support::FakeWindow;
using Calls = std::vector<std::string>;

class WindowManagerTest : public testing::Test {
 protected:
  std::shared_ptr<FakeWindow> window(std::size_t index) { return shell.application.all.at(index); }
  std::shared_ptr<web::WindowViewModel> model(std::size_t index) {
    return shell.manager->windows().viewModel(window(index));
  }
  std::string saved() { return shell.files.files["/data/session.json"]; }
  bool press(bool isTab, std::uint32_t flags, const std::string& text = "") {
    const bool consumed = shell.application.keyMonitor({isTab, {flags}, text, text});
    shell.settle();
    return consumed;
  }

  support::TestShell shell;
};

TEST_F(WindowManagerTest, OpensALoneWindowThatMayBeMergedLater) {
  shell.start();
  ASSERT_EQ(shell.application.all.size(), 1U);
  EXPECT_EQ(window(0)->calls, (Calls{"mode 2", "key", "mode 1"}));
  EXPECT_EQ(shell.webView(model(0))->loads, (Calls{"https://app.example.com/"}));
}

TEST_F(WindowManagerTest, NewTabsStandBehindTheKeyWindow) {
  shell.start();
  shell.manager->newTab();
  shell.application.setKey(window(0));
  window(0)->setTabbingMode(platform::TabbingMode::disallowed);
  window(0)->setTabbingIdentifier("other");
  shell.manager->newTab();
  EXPECT_EQ(window(0)->tabbingMode(), platform::TabbingMode::preferred);
  EXPECT_EQ(window(0)->tabbingIdentifier(), "ondrel");
  const auto tabs = window(0)->tabGroup()->windows();
  ASSERT_EQ(tabs.size(), 3U);
  EXPECT_EQ(tabs[1], window(2)) << "directly behind the key window, not at the end";
  EXPECT_EQ(window(2)->calls, (Calls{"mode 1", "key"}));
  shell.application.key = nullptr;
  shell.manager->newTab();
  EXPECT_EQ(window(3)->tabGroup(), nullptr) << "without a key window it is a window of its own";
}

TEST_F(WindowManagerTest, TabsOpenedBehindComeInTheirOrder) {
  shell.start();
  shell.manager->newTab();
  shell.application.setKey(window(0));
  const auto open = [this] { model(0)->openInNewTab(web::WindowViewModel::make(shell.services), false); };
  open();
  open();
  EXPECT_EQ(window(0)->group->windows(),
            (std::vector<std::shared_ptr<platform::Window>>{window(0), window(2), window(3), window(1)}));
  shell.application.setKey(window(1));
  shell.application.setKey(window(0));
  open();
  EXPECT_EQ(window(0)->group->windows()[1], window(4)) << "another tab was looked at";
  window(4)->close();
  open();
  EXPECT_EQ(window(0)->group->windows()[1], window(4));
}

TEST_F(WindowManagerTest, ChoosesTheActiveWindow) {
  shell.start();
  shell.manager->openMainWindow();
  shell.manager->openMainWindow();
  EXPECT_EQ(shell.manager->windows().activeWindow()->first, window(0)) << "no mail anywhere: the first";
  model(1)->urlString.set("https://app.example.com/mail/Inbox/");
  model(2)->urlString.set("https://app.example.com/mail/Sent/");
  EXPECT_EQ(shell.manager->windows().activeWindow()->first, window(2)) << "the key window shows mail";
  shell.application.setKey(window(0));
  EXPECT_EQ(shell.manager->windows().activeWindow()->first, window(1))
      << "the key window doesn't: the first that does";

  shell.application.setKey(window(2));
  shell.manager->addresses().openURL("https://app.example.com/mail/Inbox/T.M");
  EXPECT_EQ(*model(1)->urlString, "https://app.example.com/mail/Inbox/T.M")
      << "here the key window has no preference";
  EXPECT_EQ(shell.application.activations, 1);
  EXPECT_EQ((Calls{window(1)->calls.end() - 2, window(1)->calls.end()}), (Calls{"unminimize", "key"}));
  window(1)->calls.clear();
  EXPECT_TRUE(shell.manager->addresses().loadInActiveWindow("https://app.example.com/mail/x"));
  EXPECT_EQ(shell.webView(model(1))->loads.back(), "https://app.example.com/mail/x") << "openURL made it key";
  EXPECT_EQ(window(1)->calls, (Calls{"unminimize", "key"}));
}

TEST_F(WindowManagerTest, PrintsThroughThePage) {
  shell.start();
  shell.manager->printActive();
  shell.settle();
  EXPECT_EQ(shell.webView(model(0))->evaluations, (Calls{"window.print()"}));
}

TEST_F(WindowManagerTest, AWindowThatIsNoBrowserCountsForNothing) {
  shell.start();
  window(0)->close();
  shell.settle();
  shell.application.makeWindow({400, 300, "", "files"});
  EXPECT_EQ(shell.manager->windows().activeWindow(), std::nullopt);
  EXPECT_FALSE(shell.manager->addresses().loadInActiveWindow("https://app.example.com/mail/x"));
  shell.manager->addresses().openInNewTabOrWindow("https://app.example.com/mail/compose?u=1");
  EXPECT_EQ(shell.application.all.size(), 2U);
  EXPECT_EQ(*model(1)->urlString, "https://app.example.com/mail/compose?u=1");
  EXPECT_TRUE(shell.manager->windows().hasComposeWindow());
  EXPECT_EQ(shell.manager->windows().currentAccountParameter(), "1");
  EXPECT_TRUE(shell.manager->windows().mainWindowContainsMail());
  EXPECT_EQ(shell.application.key, window(1));
  shell.manager->addresses().openInNewTabOrWindow("https://app.example.com/x");
  EXPECT_EQ(window(2)->group, window(1)->group);
  EXPECT_FALSE(shell.manager->windows().mainWindowContainsMail());
  shell.application.main = window(1);
  shell.application.key = nullptr;
  EXPECT_TRUE(shell.manager->windows().mainWindowContainsMail()) << "the one in front of ours, key or not";
}

TEST_F(WindowManagerTest, ComposeAddresses) {
  for (const auto* compose : {"https://a/mail/compose", "https://a/mail/Inbox/compose?u=1"})
    EXPECT_TRUE(web::isComposeURL(compose)) << compose;
  for (const auto* other : {"https://a/compose", "https://a/mail/composer", "https://a/mail/compose/"})
    EXPECT_FALSE(web::isComposeURL(other)) << other;
}

TEST_F(WindowManagerTest, TheLastClosedWindowLeavesItsFrame) {
  shell.start();
  shell.manager->newTab();
  window(1)->setFrame({1, 2, 333, 444});
  window(0)->close();
  shell.settle();
  EXPECT_EQ(shell.manager->lastClosedWindowFrame(), std::nullopt);
  window(0)->close();
  shell.settle();
  EXPECT_EQ(saved(), R"({"windows":[]})");
  EXPECT_TRUE(shell.webViews.made.at(0).expired()) << "the web view goes with its window";
  shell.manager->reopenWindow();
  EXPECT_EQ(window(0)->calls, (Calls{"setFrame", "mode 2", "key"}));
  EXPECT_EQ(window(0)->frame(), (platform::Rect{1, 2, 333, 444}));
}

TEST_F(WindowManagerTest, KeysSelectTabs) {
  shell.start();
  EXPECT_FALSE(press(false, Modifiers::command, "1")) << "a window without tabs passes the key on";
  shell.manager->newTab();
  shell.manager->newTab();
  const auto tabs = window(0)->tabGroup()->windows();
  const auto keyAfter = [&](std::uint32_t flags, const std::string& text) {
    shell.application.setKey(tabs[0]);
    const bool consumed = press(false, flags, text);
    return consumed ? std::ranges::find(tabs, shell.application.key) - tabs.begin() : -1;
  };
  EXPECT_EQ(keyAfter(Modifiers::command, "2"), 1);
  EXPECT_EQ(keyAfter(Modifiers::option, "3"), 2);
  EXPECT_EQ(keyAfter(Modifiers::command | 0x42, "9"), 2) << "the last one; low bits don't count";
  EXPECT_EQ(keyAfter(Modifiers::command, "5"), -1);
  EXPECT_EQ(keyAfter(Modifiers::command, "0"), -1);
  EXPECT_EQ(keyAfter(0, "2"), -1);
  EXPECT_EQ(keyAfter(Modifiers::command, ""), -1);
  EXPECT_EQ(keyAfter(Modifiers::command | Modifiers::shift, "2"), -1) << "selects, and passes the key on";
  EXPECT_EQ(shell.application.key, tabs[1]);

  EXPECT_TRUE(press(true, Modifiers::control));
  EXPECT_TRUE(press(true, Modifiers::control | Modifiers::shift));
  const auto& calls = std::static_pointer_cast<FakeWindow>(shell.application.key)->calls;
  EXPECT_EQ((Calls{calls.end() - 2, calls.end()}), (Calls{"next", "previous"}));
  EXPECT_FALSE(press(true, 0));
  shell.application.key = nullptr;
  EXPECT_TRUE(press(true, Modifiers::control)) << "consumed even then";
}

TEST_F(WindowManagerTest, ReadsMessageLinksFromTheClipboard) {
  shell.start();
  const std::string good = "https://app.example.com/mail/Inbox/T.M?u=1";
  const std::pair<std::optional<std::string>, bool> cases[] = {
      {good, true},
      {std::nullopt, false},
      {"https://beta.example.com/mail/Inbox/T.M", false},
      {"https://app.example.com/settings/", false},
      {good + " and more", false},
  };
  for (const auto& [text, recognised] : cases) {
    shell.clipboard.text = text;
    shell.application.menuOpened.emit();
    shell.settle();
    EXPECT_EQ(shell.manager->copiedLink().url->has_value(), recognised) << text.value_or("none");
  }
  shell.settings.setEnvironment(settings::FastmailEnvironment::beta);
  shell.clipboard.text = good;
  EXPECT_FALSE(press(false, Modifiers::command | Modifiers::shift, "F"))
      << "the menu's item shall see it too";
  EXPECT_EQ(*shell.manager->copiedLink().url, good);
}

TEST_F(WindowManagerTest, FollowsTheKeyWindowsPage) {
  shell.start();
  EXPECT_FALSE(*shell.manager->conversation().activeURLContainsMail);
  const auto webView = shell.webView(model(0));
  webView->loading = false;
  webView->answer = [](const std::string&) { return boost::json::value(true); };
  model(0)->urlString.set("https://app.example.com/mail/Inbox/T.M");
  shell.settle();
  EXPECT_TRUE(*shell.manager->conversation().activeURLContainsMail);
  EXPECT_TRUE(*shell.manager->conversation().isConversationVisible);
  EXPECT_EQ(webView->evaluations,
            (Calls{"globalThis.FastMail?.router?.appController?.isConversationVisible ?? false"}));

  // The message comes from the server when the address has long been there: the fake used to have it at once.
  bool isThere = false;
  webView->answer = [&isThere](const std::string&) { return boost::json::value(isThere); };
  model(0)->urlString.set("https://app.example.com/mail/Inbox/T.N");
  shell.settle();
  EXPECT_FALSE(*shell.manager->conversation().isConversationVisible);
  isThere = true;
  shell.loop.advance(std::chrono::seconds(2));
  EXPECT_TRUE(*shell.manager->conversation().isConversationVisible);

  struct {
    platform::ScriptResult answer;
    bool loading;
  } const misses[] = {{boost::json::value("true"), false},
                      {std::unexpected(platform::ScriptError{}), false},
                      {boost::json::value(true), true}};
  int step = 0;
  for (const auto& miss : misses) {
    webView->answer = [](const std::string&) { return boost::json::value(true); };
    webView->loading = false;
    model(0)->urlString.set("https://app.example.com/mail/Inbox/" + std::to_string(++step));
    shell.settle();
    ASSERT_TRUE(*shell.manager->conversation().isConversationVisible);
    webView->answer = [&miss](const std::string&) { return miss.answer; };
    webView->loading = miss.loading;
    model(0)->urlString.set("https://app.example.com/mail/Inbox/" + std::to_string(++step));
    shell.settle();
    EXPECT_FALSE(*shell.manager->conversation().isConversationVisible) << step;
  }

  shell.manager->newTab();
  shell.settle();
  EXPECT_FALSE(*shell.manager->conversation().activeURLContainsMail)
      << "the new key window is not at the mail application yet";
  model(1)->urlString.set("https://app.example.com/mail/");
  shell.settle();
  EXPECT_TRUE(*shell.manager->conversation().activeURLContainsMail)
      << "the second change is followed as well";

  shell.application.setKey(window(0));
  shell.settle();
  shell.application.setKey(window(1));
  shell.loop.advance(5s);
  const auto writes = shell.files.writes;
  model(0)->urlString.set("https://app.example.com/mail/behind");
  shell.loop.advance(5s);
  EXPECT_EQ(shell.files.writes, writes + 1) << "the tab that was in front before is still followed, once";
  shell.application.setKey(window(0));
  shell.settle();
  window(1)->close();
  shell.settle();
  EXPECT_TRUE(*shell.manager->conversation().activeURLContainsMail);
}

TEST_F(WindowManagerTest, SavesTwoSecondsAfterTheLastChange) {
  shell.start();
  shell.loop.advance(3s);
  const auto before = shell.files.writes;
  for (int i = 0; i < 5; ++i) {
    model(0)->urlString.set("https://app.example.com/mail/" + std::to_string(i));
    shell.loop.advance(1900ms);
  }
  EXPECT_EQ(shell.files.writes, before) << "it keeps changing";
  shell.loop.advance(99ms);
  EXPECT_EQ(shell.files.writes, before);
  shell.loop.advance(1ms);
  EXPECT_EQ(shell.files.writes, before + 1);
  EXPECT_TRUE(saved().contains("/mail/4"));
  model(0)->urlString.set("https://app.example.com/mail/last");
  shell.application.deactivating.emit();
  shell.settle();
  EXPECT_TRUE(saved().contains("/mail/last")) << "leaving the application saves at once";
}

TEST_F(WindowManagerTest, TheEndSavesWhatIsOpenAndNothingAfterIt) {
  shell.start();
  shell.manager->newTab();
  shell.application.aboutToQuit.emit();
  const auto session = PersistedSession::decode(saved());
  ASSERT_TRUE(session);
  EXPECT_EQ(session->windows.at(0).tabs.size(), 2U);
  const auto text = saved();
  window(1)->close();
  window(0)->close();
  shell.settle();
  EXPECT_EQ(saved(), text) << "the windows close because the program ends";
}

TEST_F(WindowManagerTest, AnEndBeforeTheRestoringLosesNothing) {
  shell.files.files["/data/session.json"] = "kept";
  shell.closedTabs.emplace(shell.files, shell.files);
  shell.manager = std::make_unique<WindowManager>(shell.application, shell.settings, shell.sessionStore,
                                                  *shell.closedTabs, shell.clipboard, shell.services,
                                                  BrowserContentFactory());
  shell.application.aboutToQuit.emit();
  EXPECT_EQ(saved(), "kept");
}

TEST_F(WindowManagerTest, SurvivesTheManagersEndWithWorkPending) {
  shell.start();
  model(0)->urlString.set("https://app.example.com/mail/x");
  shell.manager->copiedLink().refresh();
  shell.loop.advance(1s);
  shell.manager.reset();
  const auto writes = shell.files.writes;
  shell.loop.advance(10s);
  EXPECT_EQ(shell.files.writes, writes);
  EXPECT_TRUE(shell.webViews.made.at(0).expired());
}

} // namespace
} // namespace ondrel::app
