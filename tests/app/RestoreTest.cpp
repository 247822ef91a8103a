#include "support/TestShell.h"

#include <gtest/gtest.h>

namespace ondrel::app {
namespace {

using Calls = std::vector<std::string>;

PersistedTab tab(const std::string& name, std::optional<base::Bytes> state, double zoom = 1.0,
                 bool toolbar = true) {
  return {"https://app.example.com/mail/" + name, name, std::move(state), zoom, toolbar};
}

// The engine's state of a tab that shows that page.
base::Bytes at(const std::string& name) {
  const auto url = "https://app.example.com/mail/" + name;
  return {url.begin(), url.end()};
}

class RestoreTest : public testing::Test {
 protected:
  void startWith(const PersistedSession& session, bool inBackground = false) {
    shell.files.files["/data/session.json"] = session.encoded();
    shell.start(inBackground);
  }
  PersistedSession saveNow() {
    shell.application.deactivating.emit();
    shell.settle();
    return *PersistedSession::decode(shell.files.files["/data/session.json"]);
  }
  std::shared_ptr<web::WindowViewModel> model(std::size_t index) {
    return shell.manager->windows().viewModel(shell.application.all.at(index));
  }

  support::TestShell shell;
};

TEST_F(RestoreTest, OnlyTheTabInFrontGetsAWebView) {
  const PersistedSession session{
      {{{tab("a", at("a"), 1.15), tab("b", at("b"), 0.85), tab("c", {}, 1.05, false)},
        PersistedFrame{5, 6, 700, 500}}}};
  startWith(session);
  ASSERT_EQ(shell.webViews.made.size(), 1U);
  EXPECT_EQ(shell.application.all.at(1)->tabbingMode(), platform::TabbingMode::preferred);
  const auto front = shell.webView(model(0));
  EXPECT_EQ(front->restored, (std::vector<base::Bytes>{at("a")}));
  EXPECT_TRUE(front->loads.empty()) << "the state brings the page back";
  front->zoom = 1.15; // as the view sets it when it appears

  for (int i = 0; i < 3; ++i)
    EXPECT_EQ(saveNow(), session) << "any number of saves keeps what nobody has looked at";

  shell.application.setKey(shell.application.all.at(2));
  shell.showFocusedWindow();
  EXPECT_EQ(shell.webView(model(2))->loads, (Calls{"https://app.example.com/mail/c"}))
      << "no state: it loads its address";
  shell.application.setKey(shell.application.all.at(1));
  shell.showFocusedWindow();
  EXPECT_EQ(shell.webView(model(1))->restored, (std::vector<base::Bytes>{at("b")}));
  EXPECT_TRUE(std::holds_alternative<web::AddressPage>(model(1)->firstPage));
}

TEST_F(RestoreTest, OnlyPagesOfTheServiceKeepTheirState) {
  auto foreign = tab("b", at("b"));
  foreign.urlString = "https://elsewhere.example/";
  startWith({{{{tab("a", at("a")), foreign}, std::nullopt}}});
  EXPECT_EQ(saveNow().windows[0].tabs[1].interactionState, std::nullopt);
  EXPECT_EQ(saveNow().windows[0].tabs[0].interactionState, at("a"));
  model(0)->foreignHost.set("elsewhere.example");
  EXPECT_EQ(saveNow().windows[0].tabs[0].interactionState, std::nullopt)
      << "such a page is still shown while one of the service is on its way";
}

TEST_F(RestoreTest, TheActiveTabAndTheSizeComeBack) {
  const PersistedSession session{
      {{{tab("a", at("a")), tab("b", at("b"))}, PersistedFrame{5, 6, 700, 500}, true, 1}}};
  startWith(session);
  EXPECT_EQ(shell.application.key, shell.application.all.at(1));
  EXPECT_EQ(shell.webViews.made.size(), 1U) << "the first tab was never seen";
  EXPECT_EQ(saveNow(), session);
  EXPECT_FALSE(
      PersistedSession::decode(R"({"windows":[{"tabs":[],"selectedTab":7}]})")->windows[0].selectedTab);
}

TEST_F(RestoreTest, ATabNotShownYetTakesANewAddressWithItsHistory) {
  // The double didn't tell that restoring changes the address, which then replaced the new one.
  startWith({{{{tab("a", at("a")), tab("b", at("b"))}, std::nullopt}}});
  shell.settings.fastmailEnvironmentDidChange.emit();
  shell.settle();
  EXPECT_EQ(saveNow().windows[0].tabs[1].interactionState, std::nullopt)
      << "it would bring the old page back";
  shell.application.setKey(shell.application.all.at(1));
  shell.showFocusedWindow();
  const auto view = shell.webView(model(1));
  EXPECT_EQ(view->restored.size(), 1U);
  EXPECT_EQ(view->loads, (Calls{"https://app.example.com/"}));
  EXPECT_EQ(*model(1)->urlString, "https://app.example.com/");
}

TEST_F(RestoreTest, ATabWhoseStateTheEngineRefusesLoadsItsAddress) {
  shell.webViews.acceptsState = false;
  startWith({{{{tab("a", at("a"))}, std::nullopt}}});
  EXPECT_EQ(shell.webView(model(0))->loads, (Calls{"https://app.example.com/mail/a"}));
}

TEST_F(RestoreTest, AfterAStartInTheBackgroundTheFirstWishForAWindowBringsThemBack) {
  const PersistedSession session{{{{tab("a", at("a"))}, PersistedFrame{5, 6, 700, 500}}}};
  startWith(session, true);
  EXPECT_TRUE(shell.application.all.empty());
  EXPECT_EQ(saveNow(), session) << "nothing to save isn't saved";
  shell.manager->addresses().openURL("https://app.example.com/mail/b");
  ASSERT_EQ(shell.application.all.size(), 1U) << "the message comes where mail is shown";
  EXPECT_EQ(saveNow().windows[0].tabs[0].urlString, "https://app.example.com/mail/b");
  shell.application.all.at(0)->close();
  shell.settle();
  shell.manager->reopenWindow();
  EXPECT_EQ(*model(0)->urlString, "https://app.example.com/") << "only once";
}

TEST_F(RestoreTest, DamagedOrEmptySessionsOpenAFreshWindow) {
  for (const auto* text : {R"({"windows":[]})", "", "{\"windows\":[{\"tabs\":", "null"}) {
    support::TestShell fresh;
    fresh.files.files["/data/session.json"] = text;
    fresh.start();
    EXPECT_EQ(fresh.application.all.size(), 1U) << text;
  }
  startWith({{{{}, std::nullopt}}});
  EXPECT_TRUE(shell.application.all.empty()) << "a file with nothing but empty windows opens none";
}

TEST_F(RestoreTest, GroupsAreSavedOnceAndForeignWindowsNot) {
  startWith({{{{tab("a", {}), tab("b", {})}, std::nullopt}, {}, {{tab("c", {})}, std::nullopt}}});
  shell.application.makeWindow({400, 300, "", "files"});
  shell.manager->openMainWindow();
  const auto session = saveNow();
  ASSERT_EQ(session.windows.size(), 3U);
  EXPECT_EQ(session.windows[0].tabs.size(), 2U);
  EXPECT_EQ(session.windows[1].tabs.at(0).title, "c");
  EXPECT_EQ(session.windows[2].frame->width, 870);
}

} // namespace
} // namespace ondrel::app
