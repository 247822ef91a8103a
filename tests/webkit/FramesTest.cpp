// Which frame a script message came from, as the engine sees it and whatever the page does.
#include "support/WebKitTest.h"

#include <set>

namespace ondrel::tests {

class FramesTest : public WebKitTest {
 protected:
  void SetUp() override {
    WebKitTest::SetUp();
    server_.serve("/same", posting("'same'") + "<script>var where='same'</script>");
    server_.serve("/cross", posting("'cross'") + "<script>var where='cross'</script>");
    server_.serve("/sandboxed", posting("'sandboxed'") + "<script>var where='sandboxed'</script>");
  }

  void loadFrames() {
    loadHtml(posting("'main'") +
             "<script>var where='main'</script>"
             "<iframe src='/same'></iframe>"
             "<iframe src='" +
             server_.url("/cross", "mail.localhost") +
             "'></iframe>"
             "<iframe src='/sandboxed' sandbox='allow-scripts'></iframe>"
             "<iframe srcdoc=\"<script>window.webkit.messageHandlers.ondrel.postMessage('srcdoc')</script>\">"
             "</iframe>"
             "<iframe sandbox='allow-scripts' srcdoc=\"<script>"
             "window.webkit.messageHandlers.ondrel.postMessage('sandboxed srcdoc')</script>\"></iframe>"
             "<iframe id=blank></iframe>"
             "<script>blank.contentWindow.eval(\"window.webkit.messageHandlers.ondrel.postMessage('blank')\")"
             "</script>");
    ASSERT_TRUE(waitForMessages(7));
  }
};

TEST_F(FramesTest, MessagesTellTheirFrame) {
  loadFrames();
  const auto own = server_.origin();
  const struct {
    const char* body;
    std::string url;
    std::string origin;
    bool isMain;
  } table[] = {
      {"main", server_.url("/page"), own, true},
      {"same", server_.url("/same"), own, false},
      {"cross", server_.url("/cross", "mail.localhost"), server_.origin("mail.localhost"), false},
      {"sandboxed", server_.url("/sandboxed"), "null", false},
      {"srcdoc", "about:srcdoc", own, false},
      {"sandboxed srcdoc", "about:srcdoc", "null", false},
      {"blank", "about:blank", own, false},
  };
  std::set<std::uint64_t> ids;
  for (const auto& row : table) {
    const auto& message = messageWith(row.body);
    EXPECT_EQ(message.name, "ondrel");
    EXPECT_EQ(message.frame.url, row.url) << row.body;
    EXPECT_EQ(message.frame.origin, row.origin) << row.body;
    EXPECT_EQ(message.frame.isMainFrame, row.isMain) << row.body;
    EXPECT_EQ(message.webView.lock(), view_);
    ids.insert(message.frame.id);
  }
  EXPECT_EQ(ids.size(), std::size(table)) << "ids must tell frames apart";
}

TEST_F(FramesTest, EvaluatesInTheFrameOfAMessage) {
  loadFrames();
  for (const char* name : {"main", "same", "cross", "sandboxed"})
    EXPECT_EQ(evaluateToText("where", messageWith(name).frame), "\"" + std::string(name) + "\"");

  const auto same = messageWith("same").frame;
  EXPECT_EQ(evaluateToText("({a: [1, 'b']})", same), "{\"a\":[1,\"b\"]}");
  EXPECT_EQ(evaluateToText("(function() {})", same), "unsupportedValue");
  EXPECT_EQ(evaluateToText("throw new Error('no')", same), "exception");
  // The exception stays with the caller: no later call of the page sees it.
  EXPECT_EQ(evaluateToText("1", same), "1");

  evaluate("document.querySelectorAll('iframe')[0].remove()");
  EXPECT_EQ(evaluateToText("1", same), "gone");
  auto stranger = messageWith("cross").frame;
  stranger.id = 999999;
  EXPECT_EQ(evaluateToText("1", stranger), "gone");
}

TEST_F(FramesTest, FrameThatMovedToAnotherOriginIsGone) {
  loadHtml("<iframe src='/same'></iframe>");
  ASSERT_TRUE(waitForMessages(1));
  const auto frame = messageWith("same").frame;
  evaluate("document.querySelector('iframe').src = '" + server_.url("/cross", "mail.localhost") + "'");
  ASSERT_TRUE(waitForMessages(2));
  EXPECT_EQ(messageWith("cross").frame.id, frame.id)
      << "the test needs the same frame to show another document";
  EXPECT_EQ(evaluateToText("where", frame), "gone");
}

TEST_F(FramesTest, PageCannotForgeItsOrigin) {
  server_.serve("/forging", "<script>"
                            "Object.defineProperty(window, 'origin', {value: 'https://forged.example'});"
                            "</script><img name=origin><form id=location></form>" +
                                posting("'forging'"));
  // A parent may change the window of the empty document that a frame begins with.
  server_.serve("/reused",
                {posting("'reused'"), "text/html", {{"Content-Security-Policy", "sandbox allow-scripts"}}});
  loadHtml("<iframe src='/forging' sandbox='allow-scripts'></iframe><iframe id=f></iframe><script>"
           "Object.defineProperty(f.contentWindow, 'origin', {value: 'https://forged.example'});"
           "f.contentWindow.Object.defineProperty = null; f.contentWindow.JSON = null;"
           "f.src = '/reused'</script>");
  ASSERT_TRUE(waitForMessages(2));
  EXPECT_EQ(messageWith("forging").frame.origin, "null");
  EXPECT_EQ(messageWith("forging").frame.url, server_.url("/forging"));
  EXPECT_EQ(messageWith("reused").frame.origin, "null");
}

TEST_F(FramesTest, HandlersEndWithTheirDocument) {
  loadHtml("<iframe id=f src='/same'></iframe>");
  ASSERT_TRUE(waitForMessages(1));
  const auto frame = messageWith("same").frame;
  evaluate("var kept = f.contentWindow.webkit.messageHandlers.ondrel; kept.postMessage('while it shows'); 0");
  ASSERT_TRUE(waitForMessages(2));
  EXPECT_EQ(messageWith("while it shows").frame.id, frame.id);

  // The frame shows another document now, then none any more: the old function must not speak for it.
  evaluate("f.src = '" + server_.url("/cross", "mail.localhost") + "'");
  ASSERT_TRUE(waitForMessages(3));
  evaluate("kept.postMessage('stale'); f.remove(); kept.postMessage('removed');"
           "window.webkit.messageHandlers.ondrel.postMessage('last'); 0");
  ASSERT_TRUE(waitForMessages(4));
  EXPECT_EQ(delegate_.messages.back().body, boost::json::value("last"));
}

TEST_F(FramesTest, FrameMayGoWhileItsMessageIsWritten) {
  loadHtml("<iframe id=f src='/same'></iframe>");
  ASSERT_TRUE(waitForMessages(1));
  evaluate(
      "f.contentWindow.webkit.messageHandlers.ondrel.postMessage({toJSON() { f.remove(); return 'going' }});"
      "window.webkit.messageHandlers.ondrel.postMessage('last'); 0");
  ASSERT_TRUE(waitForMessages(3));
  EXPECT_EQ(messageWith("going").frame.url, server_.url("/same"));
}

} // namespace ondrel::tests
