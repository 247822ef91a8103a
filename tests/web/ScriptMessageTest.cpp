#include "CoordinatorTest.h"

#include <boost/json/parse.hpp>

namespace ondrel::web {
namespace {

namespace json = boost::json;

using ScriptMessageTest = CoordinatorTest;

TEST_F(ScriptMessageTest, TitleAndHoverFollowThePage) {
  post({{"type", "titleChange"}, {"title", "Hello"}});
  EXPECT_EQ(*model->title, "Hello");
  post({{"type", "mouseover"}, {"href", "https://elsewhere.example/"}});
  EXPECT_EQ(*model->mouseOverString, "https://elsewhere.example/");
  shell.settings.set(settings::keys::hideInternalLinks, true);
  post({{"type", "mouseover"}, {"href", "https://outside.test/"}});
  for (const auto* internal : {"https://app.example.com/mail/", "https://1.usercontent.example/x"})
    post({{"type", "mouseover"}, {"href", internal}});
  EXPECT_EQ(*model->mouseOverString, "https://outside.test/")
      << "an internal link leaves the last text standing";
  post({{"type", "mouseover"}, {"href", ""}});
  EXPECT_EQ(*model->mouseOverString, "");
}

TEST_F(ScriptMessageTest, ABodyThatIsNoMapOfStringsChangesNothing) {
  int forwarded = 0;
  model->onScriptMessage = [&](const std::string&, const json::value&) { ++forwarded; };
  for (const json::value& body : std::vector<json::value>{
           json::value(),
           "titleChange",
           json::array{"type", "titleChange"},
           {{"type", 7}},
           {{"type", "titleChange"}, {"title", "x"}, {"n", 1}},
           {{"type", "titleChange"}, {"title", {{"deep", json::array{1, 2}}}}},
           {{"title", "x"}},
       })
    post(body);
  EXPECT_EQ(forwarded, 7);
  for (const auto* type : {"titleChange", "mouseover", "compose"})
    post({{"type", type}});
  EXPECT_EQ(forwarded, 7) << "a known type ends the dispatch, usable or not";
  post({{"type", "titleChange"}, {"title", "x"}}, "https://app.example.com", true, "another");
  EXPECT_EQ(forwarded, 8) << "a known type under another name goes to the observer";
  EXPECT_EQ(*model->title, "New Tab");
  EXPECT_EQ(windows(), 1U);
}

TEST_F(ScriptMessageTest, OnlyTheServicesOwnPagesMayAct) {
  const std::pair<std::string, bool> origins[] = {
      {"https://app.example.com", true},
      {"https://beta.example.com", true},
      {"https://evil.example", false},
      {"null", false},
      {"", false},
      {"http://app.example.com", false},
  };
  for (const auto& [origin, acts] : origins) {
    for (const bool isMainFrame : {true, false}) {
      view->prints.clear();
      const auto before = windows();
      post({{"type", "print"}}, origin, isMainFrame);
      shell.settle();
      post({{"type", "compose"}, {"targetAddress", "https://app.example.com/mail/compose&ui=minimal"}},
           origin, isMainFrame);
      for (const auto* type : {"sendClicked", "discardClicked", "discardUndone"})
        post({{"type", type}}, origin, isMainFrame);
      view->evaluations.clear();
      shell.log.lines().clear();
      post({{"type", "composeReady"}}, origin, isMainFrame);
      post({{"type", "ondrelFilesAutoShare"}}, origin, isMainFrame);
      shell.settle();
      EXPECT_EQ(view->prints.size(), acts || isMainFrame ? 1U : 0U) << "a page may print itself: " << origin;
      EXPECT_EQ(windows(), before + (acts ? 1 : 0)) << origin;
      EXPECT_EQ(view->evaluations.size(), acts ? 1U : 0U) << origin;
      EXPECT_EQ(shell.log.anyStartsWith("error script: files-auto-share"), acts) << origin;
      const auto title = origin + (isMainFrame ? "main" : "sub");
      post({{"type", "titleChange"}, {"title", title}}, origin, isMainFrame);
      EXPECT_EQ(*model->title == title, acts || isMainFrame) << origin;
    }
  }
}

TEST_F(ScriptMessageTest, ComposeOpensAReducedWindow) {
  post({{"type", "compose"}, {"targetAddress", "https://app.example.com/mail/compose&ui=minimal"}});
  ASSERT_EQ(windows(), 2U);
  EXPECT_EQ(*newest()->urlString, "https://app.example.com/mail/compose&ui=minimal");
  EXPECT_FALSE(*newest()->toolbarVisible);
  EXPECT_EQ(newest()->webViewConfiguration, shell.scripts.composeConfiguration());
  EXPECT_EQ(shell.application.key, shell.application.last());
  // None of them reports the title, which follows the page's own then.
  const auto page = shell.webView(newest());
  page->currentTitle = "The service";
  page->delegate->didFinish();
  page->currentTitle = "New message";
  page->delegate->titleDidChange();
  EXPECT_EQ(*newest()->title, "New message");

  post({{"type", "compose"}});
  for (const auto* none : {"", "http://[", "&ui=minimal", "file:///etc/passwd",
                           "https://elsewhere.example/mail/compose", "http://app.example.com/mail/compose"})
    post({{"type", "compose"}, {"targetAddress", none}});
  EXPECT_EQ(windows(), 2U) << "an address of the service and no other";
}

TEST_F(ScriptMessageTest, TellsHowAFileTooLargeWasShared) {
  post({{"type", "ondrelFilesAutoShare"}, {"status", "success"}, {"filename", "a\"b.zip"}});
  post({{"type", "ondrelFilesAutoShare"}, {"status", "error"}, {"filename", "b.zip"}, {"reason", "why"}});
  shell.settle();
  const auto& told = shell.notificationCenter.requests;
  ASSERT_EQ(told.size(), 2U);
  EXPECT_TRUE(told[0].content.body.starts_with("\"a\"b.zip\" was too large"));
  EXPECT_EQ(told[1].content.title, "Couldn't share \"b.zip\"");
}

TEST_F(ScriptMessageTest, ComposeReadyBringsTheSetting) {
  post({{"type", "composeReady"}});
  shell.settle();
  shell.settings.set(settings::keys::composeInNewWindow, true);
  view->answer = [](const std::string&) { return std::unexpected(platform::ScriptError{}); };
  post({{"type", "composeReady"}});
  shell.settle();
  EXPECT_EQ(view->evaluations, (Calls{"composeInWindow = false;", "composeInWindow = true;"}));
}

} // namespace
} // namespace ondrel::web
