// Documents that come back as they were left, out of the engine's page cache.
#include "support/WebKitTest.h"

namespace ondrel::tests {

class PageCacheTest : public WebKitTest {
 protected:
  void come(void (WebView::*move)()) {
    const auto finished = delegate_.count("finish");
    (view().*move)();
    ASSERT_TRUE(waitForEvent("finish", finished + 1));
  }
  static std::string page(const std::string& name) {
    return "<script>var where = '" + name +
           "'; const say = (text) => window.webkit.messageHandlers.ondrel.postMessage(text); say(where);"
           "addEventListener('pageshow', (event) => event.persisted && say(where + ' again'))</script>";
  }
};

TEST_F(PageCacheTest, DocumentThatComesBackIsHeardAndReached) {
  server_.serve("/frame", page("frame"));
  server_.serve("/other", page("other"));
  loadHtml(page("main") + "<iframe src='/frame'></iframe>");
  ASSERT_TRUE(waitForMessages(2));
  const auto main = messageWith("main").frame;
  loadUrl(server_.url("/other"));

  come(&WebView::goBack);
  EXPECT_TRUE(waitFor([&] { return evaluateToText("where", main) == "\"main\""; }));
  ASSERT_TRUE(waitForMessages(5)) << "the two documents must have come out of the cache, and be heard";
  EXPECT_EQ(messageWith("main again").frame.id, main.id);
  EXPECT_EQ(messageWith("frame again").frame.url, server_.url("/frame"));
  EXPECT_EQ(evaluateToText("where", messageWith("frame again").frame), "\"frame\"");
  evaluate("say('more'); 0");
  ASSERT_TRUE(waitForMessages(6));

  come(&WebView::goForward);
  ASSERT_TRUE(waitForMessages(7));
  EXPECT_EQ(messageWith("other again").frame.url, server_.url("/other"));
}

} // namespace ondrel::tests
