// A page that posts more messages than anybody can read.
#include "support/WebKitTest.h"

#include <gtk/gtk.h>

namespace ondrel::tests {

// In each test a page posts more numbers in one go than can be held, and then "later" from time to time.
class FloodTest : public WebKitTest {
 protected:
  static constexpr std::size_t flood = 100'000;
  static constexpr auto floodScript =
      "<script>const bridge = window.webkit.messageHandlers.ondrel;"
      "function flood(size) { for (let i = 0; i < size; ++i) bridge.postMessage(String(i));"
      "  setInterval(() => bridge.postMessage('later'), 50) }</script>";
  static constexpr auto dropped =
      "error script: A page posts more script messages than there is time for, and some were dropped";
  // The extension lets some hundred pass before it asks.
  static constexpr std::size_t largestBurst = 1000;

  void TearDown() override {
    if (redraw_ != 0)
      g_source_remove(redraw_);
    WebKitTest::TearDown();
  }

  std::size_t arrived() const { return delegate_.messages.size(); }
  long arrivedOf(const char* body) const {
    return std::ranges::count(delegate_.messages, boost::json::value(body), &ScriptMessage::body);
  }
  bool isOver() const {
    return arrived() > 0 && delegate_.messages.back().body == boost::json::value("later");
  }
  // Each message asks for a redraw, as what it changes in a window would.
  void countBursts() {
    delegate_.onEvent = [this](const std::string& event) {
      if (event == "message" && redraw_ == 0)
        redraw_ = g_idle_add_full(GDK_PRIORITY_REDRAW, &redrawn, this, nullptr);
    };
  }
  static gboolean redrawn(gpointer data) {
    auto* self = static_cast<FloodTest*>(data);
    self->redraw_ = 0;
    const auto now = self->arrived();
    self->mostBetweenRedraws_ =
        std::max(self->mostBetweenRedraws_, now - std::exchange(self->atRedraw_, now));
    return G_SOURCE_REMOVE;
  }

  std::size_t atRedraw_ = 0;
  std::size_t mostBetweenRedraws_ = 0;

 private:
  guint redraw_ = 0;
};

TEST_F(FloodTest, LeavesRedrawsTheirTurn) {
  loadHtml(floodScript);
  countBursts();
  evaluate("setTimeout(flood, 0, 100000); 0");
  ASSERT_TRUE(waitFor([&] { return isOver(); }, 120s)) << arrived();
  // The oldest, in their order and without a gap.
  const auto numbers = arrived() - static_cast<std::size_t>(arrivedOf("later"));
  EXPECT_GT(numbers, largestBurst) << "what comes in one go is held up to a bound";
  EXPECT_LT(numbers, flood) << "and dropped beyond it";
  for (std::size_t i = 0; i < numbers; ++i)
    ASSERT_EQ(delegate_.messages[i].body, boost::json::value(std::to_string(i)));
  EXPECT_EQ(log_.count(dropped), 1);
  EXPECT_LT(mostBetweenRedraws_, largestBurst);
  // The whole way is open again.
  EXPECT_TRUE(waitFor([&] { return arrivedOf("later") >= 3; }, 120s));
}

TEST_F(FloodTest, OfAFrameLeavesTheOthersTheirTurn) {
  server_.serve("/frame", floodScript);
  loadHtml("<iframe id=frame src='/frame'></iframe>");
  // The main frame speaks when the other has filled all the room that it gets.
  evaluate("setTimeout(() => { frame.contentWindow.flood(40000);"
           " for (let i = 0; i < 10; ++i) window.webkit.messageHandlers.ondrel.postMessage('main'); }); 0");
  ASSERT_TRUE(waitFor([&] { return arrivedOf("main") == 10; }, 120s));
  EXPECT_LT(arrived(), 2 * largestBurst) << "not after all that the frame had posted before";
  EXPECT_TRUE(waitFor([&] { return isOver(); }, 120s)) << arrived();
  EXPECT_EQ(arrivedOf("main"), 10);
}

TEST_F(FloodTest, EndsWithItsDocument) {
  loadHtml(floodScript);
  evaluate("setTimeout(() => { flood(40000); location = '/next' }); 0");
  server_.serve("/next", posting("'next'"));
  ASSERT_TRUE(waitFor([&] { return arrivedOf("next") == 1; }, 120s));
  EXPECT_EQ(delegate_.messages.back().body, boost::json::value("next"));
  runFor(200ms);
  EXPECT_EQ(delegate_.messages.back().body, boost::json::value("next"))
      << "none of the former document after it";
}

TEST_F(FloodTest, EndsWithItsPage) {
  RecordingDelegate popupDelegate;
  std::shared_ptr<WebView> popup;
  delegate_.onCreate = [&](NewWindowRequest request) -> std::shared_ptr<WebView> {
    popup = request.makeWebView({});
    popup->setDelegate(&popupDelegate);
    popup->addScriptMessageHandler("ondrel");
    show(*popup);
    return popup;
  };
  server_.serve("/popup", floodScript);
  loadHtml("<p>page</p>");
  evaluate("var opened = window.open('/popup'); 0");
  ASSERT_TRUE(waitFor([&] { return popup && popupDelegate.count("finish") == 1; }));
  evaluate("setTimeout(() => opened.flood(40000)); 0");
  ASSERT_TRUE(waitFor([&] { return !popupDelegate.messages.empty(); }, 120s));
  popup->setDelegate(nullptr);
  popup.reset();
  // In the same process, with the flood's messages held and a question open.
  EXPECT_TRUE(waitFor([&] { return evaluateToText("1") == "1"; }, 120s));
  EXPECT_TRUE(waitFor([&] { return evaluateToText("opened.closed") == "true"; }, 120s));
  runFor(200ms);
  EXPECT_EQ(delegate_.count("crashed"), 0);
  EXPECT_TRUE(waitFor([&] { return evaluateToText("1") == "1"; }, 120s));
}

} // namespace ondrel::tests
