#include "support/WebKitTest.h"

namespace ondrel::tests {

namespace {

std::shared_ptr<const UserScript> script(const std::string& mark, InjectionTime time, bool mainFrameOnly) {
  // Says what of the page is there when it runs.
  const auto source =
      "window.webkit.messageHandlers.ondrel.postMessage('" + mark +
      " ' + location.pathname + (document.getElementById('end') ? ' with content' : ' before it') + "
      "(window.pageRan ? ' after its script' : ''));";
  return std::make_shared<const UserScript>(UserScript{mark, source, time, mainFrameOnly});
}

} // namespace

using UserScriptsTest = WebKitTest;

TEST_F(UserScriptsTest, RunAtTheirTimeInTheirFramesInOrder) {
  useScripts({script("first", InjectionTime::documentStart, false),
              script("second", InjectionTime::documentStart, true),
              script("third", InjectionTime::documentEnd, true),
              script("fourth", InjectionTime::documentEnd, false)});
  // A policy that forbids the page all script but one must not get in the way.
  server_.serve("/frame", "<p id=end></p>");
  server_.serve("/page",
                {"<script nonce=a>window.pageRan = true</script><iframe src='/frame'></iframe><p id=end></p>",
                 "text/html",
                 {{"Content-Security-Policy", "script-src 'nonce-a'"}}});
  loadUrl(server_.url("/page"));
  ASSERT_TRUE(waitForMessages(6));

  std::vector<std::string> main;
  std::vector<std::string> frame;
  for (const auto& message : delegate_.messages)
    (message.frame.isMainFrame ? main : frame).emplace_back(message.body.as_string());
  EXPECT_EQ(main, (std::vector<std::string>{"first /page before it", "second /page before it",
                                            "third /page with content after its script",
                                            "fourth /page with content after its script"}));
  EXPECT_EQ(frame, (std::vector<std::string>{"first /frame before it", "fourth /frame with content"}));
}

} // namespace ondrel::tests
