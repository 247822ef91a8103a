#include "support/TestShell.h"

#include <gtest/gtest.h>

namespace ondrel::app {
namespace {

using support::FakeWindow;

constexpr auto path = "/data/closed.json";
const std::string mail = "https://app.example.com/mail/";

base::Bytes at(const std::string& name) {
  const auto url = mail + name;
  return {url.begin(), url.end()};
}

PersistedTab tab(const std::string& name) {
  return {mail + name, name, at(name), 1.0, true};
}

class ClosedTabsTest : public testing::Test {
 protected:
  void start(const PersistedSession& session) {
    shell.files.files["/data/session.json"] = session.encoded();
    shell.start();
  }
  std::shared_ptr<FakeWindow> window(const std::string& title) {
    for (const auto& each : shell.application.all)
      if (*shell.manager->windows().viewModel(each)->title == title)
        return each;
    return nullptr;
  }
  void close(const std::vector<std::string>& titles) {
    for (const auto& title : titles)
      window(title)->close();
    shell.settle();
  }
  void reopen() {
    shell.manager->reopenClosedTab();
    shell.showFocusedWindow();
    shell.settle();
  }
  std::string titles(const std::string& member) {
    std::string result;
    for (const auto& each : window(member)->group->windows())
      result += *shell.manager->windows().viewModel(each)->title;
    return result;
  }
  bool canReopen() { return *shell.manager->canReopenClosedTab(); }

  support::TestShell shell;
};

TEST_F(ClosedTabsTest, ComeBackWhereTheyStoodWithTheirHistory) {
  start({{{{tab("a"), tab("b"), tab("c"), tab("d")}, std::nullopt}}});
  EXPECT_FALSE(canReopen());
  shell.webView(shell.focusedModel())->state = at("now"); // what the web view holds when it goes
  close({"a"});
  close({"c", "b"});
  EXPECT_TRUE(canReopen());
  reopen();
  EXPECT_EQ(titles("d"), "bcd") << "what was closed in one go is one entry";
  EXPECT_EQ(shell.application.key, window("c"));
  EXPECT_EQ(shell.webView(shell.focusedModel())->restored, (std::vector<base::Bytes>{at("c")}));
  EXPECT_EQ(shell.manager->windows().viewModel(window("b"))->liveWebView(), nullptr)
      << "nobody has looked at it";
  reopen();
  EXPECT_EQ(titles("d"), "abcd");
  EXPECT_EQ(shell.webView(shell.focusedModel())->restored, (std::vector<base::Bytes>{at("now")}));
  EXPECT_FALSE(canReopen());
  reopen();
  EXPECT_EQ(shell.application.all.size(), 4U) << "nothing is left";
}

TEST_F(ClosedTabsTest, AWindowComesBackAsAWhole) {
  start({{{{tab("a")}, std::nullopt}, {{tab("b"), tab("c")}, PersistedFrame{5, 6, 700, 500}, true, 1}}});
  close({"b", "c"});
  close({"a"});
  reopen();
  EXPECT_EQ(titles("a"), "a") << "one alone is a window too";
  reopen();
  EXPECT_EQ(titles("b"), "bc");
  EXPECT_EQ(shell.application.key, window("c"));
  EXPECT_EQ(window("b")->frame(), (platform::Rect{5, 6, 700, 500}));
  EXPECT_TRUE(window("b")->isMaximized());
}

TEST_F(ClosedTabsTest, OutliveTheProgramAndTheirWindow) {
  start({{{{tab("a"), tab("b")}, std::nullopt}}});
  close({"b"});
  window("a")->close();
  shell.application.aboutToQuit.emit(); // in the same turn
  const auto kept = PersistedSession::decode(shell.files.files[path]);
  ASSERT_EQ(kept->windows.size(), 2U);

  support::TestShell next;
  next.files.files[path] = shell.files.files[path];
  next.start();
  next.manager->reopenClosedTab();
  EXPECT_EQ(next.application.all.back()->tabGroup(), nullptr) << "it was a window";
  next.manager->reopenClosedTab();
  EXPECT_EQ(next.application.all.back()->group, next.application.all[1]->group) << "in the window in front";
  EXPECT_EQ(*next.focusedModel()->title, "b");
  EXPECT_EQ(next.files.files[path], R"({"windows":[]})");
}

TEST_F(ClosedTabsTest, AreBoundedAndHoldNoLetters) {
  shell.start();
  const auto closeNew = [this](const std::string& url, bool isDone, std::size_t size) {
    shell.manager->openMainWindow();
    const auto model = shell.focusedModel();
    model->urlString.set(url);
    model->isDone = isDone;
    shell.webView(model)->state = base::Bytes(size);
    shell.application.last()->close();
    shell.settle();
  };
  closeNew(mail + "compose?u=1", false, 1);
  closeNew(mail, true, 1);
  shell.webView(shell.manager->windows().viewModels().front())->delegate->didClose();
  shell.settle();
  EXPECT_FALSE(canReopen());

  for (int i = 0; i < 30; ++i)
    closeNew(mail + std::to_string(i), false, 1);
  auto kept = PersistedSession::decode(shell.files.files[path])->windows;
  ASSERT_EQ(kept.size(), ClosedTabs::most);
  EXPECT_EQ(kept.back().tabs[0].urlString, mail + "29");
  for (int i = 0; i < 20; ++i)
    closeNew(mail, false, 256UL * 1024);
  kept = PersistedSession::decode(shell.files.files[path])->windows;
  EXPECT_EQ(kept.size(), 16U) << "4 MiB";
  closeNew(mail, false, 256UL * 1024 + 1);
  kept = PersistedSession::decode(shell.files.files[path])->windows;
  EXPECT_EQ(kept.back().tabs[0].interactionState, std::nullopt);
}

} // namespace
} // namespace ondrel::app
