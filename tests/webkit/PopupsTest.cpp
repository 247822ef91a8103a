#include "support/WebKitTest.h"

namespace ondrel::tests {

class PopupsTest : public WebKitTest {
 protected:
  // Windows of the page open as web views of this test.
  void openWindows(const Scripts& scripts = {}) {
    delegate_.onCreate = [this, scripts](NewWindowRequest request) -> std::shared_ptr<WebView> {
      asked_ = request.action;
      popup_ = request.makeWebView(scripts);
      popup_->setDelegate(&popupDelegate_);
      popup_->addScriptMessageHandler("ondrel");
      show(*popup_);
      return popup_;
    };
  }
  void TearDown() override {
    if (popup_)
      popup_->setDelegate(nullptr);
    popup_.reset();
    WebKitTest::TearDown();
  }

  NavigationAction asked_;
  RecordingDelegate popupDelegate_;
  std::shared_ptr<WebView> popup_;
};

TEST_F(PopupsTest, WindowIsConnectedToItsOpener) {
  server_.serve("/popup", "<script>opener.postMessage('from popup', '*')</script>");
  loadHtml("<script>addEventListener('message', e => window.got = e.data)</script>");
  openWindows();
  EXPECT_EQ(evaluateToText("var opened = window.open('/popup'); opened !== null"), "true");
  EXPECT_EQ(asked_.url, server_.url("/popup"));
  ASSERT_TRUE(waitFor([&] { return popupDelegate_.count("finish") == 1; }));
  EXPECT_EQ(popup_->url(), server_.url("/popup"));
  EXPECT_TRUE(waitFor([&] { return evaluateToText("window.got") == "\"from popup\""; }));

  evaluate("opened.close(); 0");
  ASSERT_TRUE(waitFor([&] { return popupDelegate_.count("close") == 1; }));
  const std::weak_ptr<WebView> weak = popup_;
  bool engineViewIsGone = false;
  g_object_set_data_full(
      G_OBJECT(gtk_widget_get_first_child(static_cast<GtkWidget*>(popup_->nativeView().handle))), "test",
      &engineViewIsGone, [](gpointer flag) { *static_cast<bool*>(flag) = true; });
  popup_->setDelegate(nullptr);
  popup_.reset();
  EXPECT_TRUE(weak.expired()) << "nothing else may hold the closed window";
  EXPECT_TRUE(waitFor([&] { return engineViewIsGone; }));
  ASSERT_TRUE(waitFor([&] { return evaluateToText("opened.closed") == "true"; }));
}

TEST_F(PopupsTest, WindowRunsTheScriptsItWasMadeWith) {
  const auto script = [](const std::string& mark, InjectionTime time, bool mainFrameOnly) {
    const auto source =
        "var global" + mark + " = 1; window.webkit.messageHandlers.ondrel.postMessage('" + mark +
        " ' + location.pathname + (document.getElementById('end') ? ' with content' : ' before it'))";
    return std::make_shared<const UserScript>(UserScript{mark, source, time, mainFrameOnly});
  };
  const auto shared = script("Shared", InjectionTime::documentEnd, true);
  useScripts({shared});
  server_.serve("/popup", "<iframe src='/frame'></iframe><p id=end></p><script>"
                          "addEventListener('DOMContentLoaded', () => "
                          "window.webkit.messageHandlers.ondrel.postMessage('page ' + globalEnd))</script>");
  server_.serve("/frame", "<p id=end></p>");
  loadHtml("<p>page</p>");
  openWindows({shared, script("Start", InjectionTime::documentStart, false),
               script("End", InjectionTime::documentEnd, true)});
  evaluate("window.open('/popup'); 0");
  ASSERT_TRUE(waitFor([&] { return popup_ && popupDelegate_.messages.size() >= 5; }));
  runFor(100ms);

  std::vector<std::string> main;
  std::vector<std::string> frame;
  for (const auto& message : popupDelegate_.messages) {
    EXPECT_EQ(message.webView.lock(), popup_);
    (message.frame.isMainFrame ? main : frame).emplace_back(message.body.as_string());
  }
  std::ranges::sort(main); // those of one time come in no particular order
  EXPECT_EQ(main, (std::vector<std::string>{"End /popup with content", "Shared /popup with content",
                                            "Start /popup before it", "page 1"}));
  EXPECT_EQ(frame, std::vector<std::string>{"Start /frame before it"});
  // None of it in the opener.
  EXPECT_EQ(evaluateToText("typeof globalShared + typeof globalStart + typeof globalEnd"),
            "\"numberundefinedundefined\"");
}

TEST_F(PopupsTest, WindowAfterTheEngineHasForgottenTheClickIsAskedForToo) {
  loadHtml("<p>page</p>");
  std::vector<bool> followsUser;
  delegate_.onCreate = [&](const NewWindowRequest& request) -> std::shared_ptr<WebView> {
    followsUser.push_back(request.followsUser);
    return nullptr;
  };
  // What the program runs in a page counts as a click. The engine remembers one for a second.
  evaluate("window.open('/popup'); setTimeout(() => window.open('/popup'), 1500); 0");
  ASSERT_TRUE(waitFor([&] { return followsUser.size() == 2; }));
  EXPECT_EQ(followsUser, (std::vector{true, false}));
}

TEST_F(PopupsTest, RefusedWindowDoesNotOpen) {
  loadHtml("<p>page</p>");
  EXPECT_EQ(evaluateToText("window.open('/popup') === null"), "true");
  EXPECT_EQ(delegate_.count("create"), 1);
  // Made, but not answered: it goes, and the page gets nothing.
  std::weak_ptr<WebView> made;
  delegate_.onCreate = [&](NewWindowRequest request) -> std::shared_ptr<WebView> {
    made = request.makeWebView({});
    return nullptr;
  };
  EXPECT_EQ(evaluateToText("window.open('/popup') === null"), "true");
  EXPECT_TRUE(made.expired());
  EXPECT_EQ(server_.requests("/popup"), 0);
}

} // namespace ondrel::tests
