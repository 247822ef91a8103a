// Pages that want their user asked before they go, and pages that hang. The engine asks for neither unless
// the user has done something with the page, so the tests click on it.
#include "support/WebKitTest.h"

#include <boost/json/serialize.hpp>

#include <cstdlib>

namespace ondrel::tests {
namespace {

class ClosingTest : public WebKitTest {
 protected:
  void SetUp() override {
    if (std::system("command -v xdotool >/dev/null") != 0)
      GTEST_SKIP() << "xdotool is missing";
    WebKitTest::SetUp();
  }

  void loadAndClick(const std::string& html) {
    loadHtml("<body style='height: 100vh' "
             "onclick=\"window.webkit.messageHandlers.ondrel.postMessage('clicked')\">" +
             html);
    // There is no window manager: the window stands at the display's corner.
    ASSERT_TRUE(useMouse("mousemove 200 200 click 1"));
    ASSERT_TRUE(waitForMessages(1));
  }
  // None when the page may go.
  std::optional<LeaveReply> tryClose(async::Duration deadline = 10s) {
    auto asked = run(view().tryClose(deadline));
    EXPECT_TRUE(asked) << "no answer at all";
    return asked ? std::move(*asked) : std::nullopt;
  }
  static std::string keeping(const std::string& before = "") {
    return "<script>addEventListener('beforeunload', e => { " + before + "; e.preventDefault(); })</script>";
  }
};

TEST_F(ClosingTest, APageThatKeepsItsUserAsksAndWaits) {
  loadAndClick(keeping());
  for (int i = 0; i < 2; ++i) {
    auto question = tryClose();
    ASSERT_TRUE(question);
    runFor(150ms);
    std::move (*question)(false);
    runFor(150ms);
    EXPECT_EQ(evaluateToText("1 + 1"), "2") << "it stays, and can be asked again";
  }
  auto question = tryClose();
  ASSERT_TRUE(question);
  std::move (*question)(true);
  runFor(150ms);
  EXPECT_EQ(delegate_.count("close"), 0) << "whoever asked closes it";
}

// The engine takes 50 ms without an answer for one.
TEST_F(ClosingTest, ABusyPageIsWaitedForAndAHungOneIsNot) {
  loadAndClick(keeping("const end = Date.now() + 700; while (Date.now() < end);"));
  auto question = tryClose();
  ASSERT_TRUE(question);
  std::move (*question)(false);
  runFor(300ms);
  EXPECT_EQ(delegate_.count("close"), 0);

  EXPECT_FALSE(tryClose(200ms));
  runFor(1500ms);
  EXPECT_EQ(delegate_.count("beforeUnload") + delegate_.count("close"), 0) << "its late question is nobody's";
  EXPECT_EQ(evaluateToText("1 + 1"), "2");
}

TEST_F(ClosingTest, APageMayGo) {
  EXPECT_FALSE(tryClose()) << "there is no page yet";
  loadHtml(keeping());
  EXPECT_FALSE(tryClose()) << "nobody has touched it";
  loadAndClick("<p>plain</p>");
  EXPECT_FALSE(tryClose());
  EXPECT_EQ(delegate_.count("close"), 0);
  evaluate("window.close(); 0");
  EXPECT_TRUE(waitForEvent("close")) << "its own wish is told";
}

TEST_F(ClosingTest, LoadingSomethingElseAsksFirst) {
  loadAndClick(keeping());
  server_.serve("/other", "other");
  bool leave = false;
  delegate_.onBeforeUnload = [&](DoneReply reply) { std::move(reply)(leave); };
  const auto kept = view().url();
  view().reload();
  ASSERT_TRUE(waitForEvent("beforeUnload"));
  view().load(server_.url("/other"));
  ASSERT_TRUE(waitForEvent("beforeUnload", 2));
  evaluate("location.href = '/other'; 0");
  ASSERT_TRUE(waitForEvent("beforeUnload", 3));
  runFor(200ms);
  EXPECT_EQ(view().url(), kept);
  EXPECT_EQ(delegate_.count("finish"), 1);
  EXPECT_TRUE(delegate_.errors.empty()) << "staying is no failure";
  leave = true;
  view().load(server_.url("/other"));
  ASSERT_TRUE(waitForEvent("finish", 2));
  EXPECT_EQ(view().url(), server_.url("/other"));
}

TEST_F(ClosingTest, AHungPageIsNoticedAndCanBeEnded) {
  loadAndClick("<p>page</p>");
  EXPECT_TRUE(view().isResponsive());
  evaluate("setTimeout(() => { for (;;); }, 50); 0");
  runFor(200ms);
  ASSERT_TRUE(useMouse("click 1"));
  ASSERT_TRUE(waitForEvent("responsiveness"));
  EXPECT_FALSE(view().isResponsive());
  EXPECT_FALSE(tryClose(100ms));
  view().terminateWebProcess();
  ASSERT_TRUE(waitForEvent("terminated"));
  loadUrl(server_.url("/page"));
  EXPECT_EQ(evaluateToText("1 + 1"), "2");
}

} // namespace
} // namespace ondrel::tests
