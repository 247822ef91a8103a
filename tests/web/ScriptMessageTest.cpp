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
  post({{"type", "mouseover"}, {"href", ""}});
  EXPECT_EQ(*model->mouseOverString, "");

  shell.settings.set(settings::keys::hideInternalLinks, true);
  post({{"type", "mouseover"}, {"href", "https://outside.test/"}});
  for (const auto* internal : {"https://app.example.com/mail/", "https://1.usercontent.example/x"}) {
    post({{"type", "mouseover"}, {"href", internal}});
    EXPECT_EQ(*model->mouseOverString, "https://outside.test/")
        << "an internal link leaves the last text standing";
  }
  post({{"type", "mouseover"}, {"href", ""}});
  EXPECT_EQ(*model->mouseOverString, "");
}

TEST_F(ScriptMessageTest, ABodyThatIsNoMapOfStringsChangesNothing) {
  int forwarded = 0;
  model->onScriptMessage = [&](const std::string&, const json::value&) { ++forwarded; };
  const json::value bodies[] = {
      json::value(),
      7,
      "titleChange",
      json::array{"type", "titleChange"},
      json::object(),
      {{"type", 7}},
      {{"type", nullptr}, {"title", "x"}},
      {{"type", "titleChange"}, {"title", "x"}, {"n", 1}},
      {{"type", "titleChange"}, {"title", {{"deep", json::array{1, 2}}}}},
      {{"title", "x"}},
      {{"type", "titlechange"}, {"title", "x"}},
      {{"type", ""}, {"title", "x"}},
  };
  for (const auto& body : bodies)
    post(body);
  EXPECT_EQ(forwarded, static_cast<int>(std::size(bodies)));
  EXPECT_EQ(*model->title, "New Tab");

  post({{"type", "titleChange"}});
  post({{"type", "mouseover"}});
  post({{"type", "compose"}, {"unrelated", std::string(1 << 20, 'x')}});
  EXPECT_EQ(forwarded, static_cast<int>(std::size(bodies)))
      << "a known type ends the dispatch, usable or not";
  EXPECT_EQ(*model->title, "New Tab");
  EXPECT_EQ(windows(), 1U);

  post({{"type", "titleChange"}, {"title", "x"}}, "https://app.example.com", true, "another");
  EXPECT_EQ(*model->title, "New Tab") << "a known type under another name goes to the observer";
  EXPECT_EQ(forwarded, static_cast<int>(std::size(bodies)) + 1);
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
      post({{"type", "compose"}, {"targetAddress", "https://app.example.com/mail/compose&ui=minimal"}},
           origin, isMainFrame);
      post({{"type", "sendClicked"}}, origin, isMainFrame);
      post({{"type", "discardClicked"}}, origin, isMainFrame);
      post({{"type", "discardUndone"}}, origin, isMainFrame);
      view->evaluations.clear();
      shell.log.lines().clear();
      post({{"type", "composeReady"}}, origin, isMainFrame);
      post({{"type", "ondrelFilesAutoShare"}}, origin, isMainFrame);
      shell.settle();
      EXPECT_EQ(view->prints.size(), acts || isMainFrame ? 1U : 0U) << "a page may print itself: " << origin;
      EXPECT_EQ(windows(), before + (acts ? 1 : 0)) << origin;
      EXPECT_EQ(view->evaluations.size(), acts ? 1U : 0U) << origin;
      EXPECT_EQ(shell.log.anyStartsWith("error script: files-auto-share"), acts) << origin;
      post({{"type", "titleChange"}, {"title", origin + (isMainFrame ? "main" : "sub")}}, origin,
           isMainFrame);
      EXPECT_EQ(*model->title == origin + (isMainFrame ? "main" : "sub"), acts || isMainFrame) << origin;
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
  EXPECT_EQ(shell.webViews.names,
            (Calls{"consoleRelayScript", "printShimScript", "chromeRemoverScript", "sendWatcherScript",
                   "discardWatcherScript", "filesAutoShareScript"}));
  // None of them reports the title, which follows the page's own then.
  const auto page = shell.webView(newest());
  page->currentTitle = "The service";
  page->delegate->didFinish();
  page->currentTitle = "New message";
  page->delegate->titleDidChange();
  EXPECT_EQ(*newest()->title, "New message");

  post({{"type", "compose"}, {"targetAddress", ""}});
  post({{"type", "compose"}});
  EXPECT_EQ(shell.log.count("error script: JS log: Cannot create a target address"), 2);
  post({{"type", "compose"}, {"targetAddress", "http://["}});
  EXPECT_EQ(windows(), 2U);
  EXPECT_EQ(shell.log.count("error script: JS compose: invalid targetAddress URL: http://["), 1);
  post({{"type", "compose"}, {"targetAddress", "&ui=minimal"}});
  EXPECT_EQ(windows(), 2U);
  EXPECT_EQ(shell.log.count("error script: JS compose: invalid targetAddress URL: &ui=minimal"), 1);
  for (const auto* foreign : {"file:///etc/passwd", "https://elsewhere.example/mail/compose", "about:blank",
                              "http://app.example.com/mail/compose", "/mail/compose"})
    post({{"type", "compose"}, {"targetAddress", foreign}});
  EXPECT_EQ(windows(), 2U) << "an address of the service and no other";
}

TEST_F(ScriptMessageTest, TellsHowAFileTooLargeWasShared) {
  const struct {
    std::optional<std::string> name;
    std::string status;
    std::string title;
    std::string body;
  } cases[] = {
      {"a\"b.zip", "success", "Attached via Fastmail Files",
       "\"a\"b.zip\" was too large to attach directly — a share link was added to your email instead."},
      {std::nullopt, "success", "Attached via Fastmail Files",
       "\"the file\" was too large to attach directly — a share link was added to your email instead."},
      {"b.zip", "error", "Couldn't share \"b.zip\"",
       "It's too large to attach — add it via Fastmail Files manually."},
      {std::nullopt, "", "Couldn't share \"the file\"",
       "It's too large to attach — add it via Fastmail Files manually."},
  };
  for (const auto& [name, status, title, body] : cases) {
    boost::json::object message{{"type", "ondrelFilesAutoShare"}, {"status", status}, {"reason", "why"}};
    if (name)
      message["filename"] = *name;
    post(message);
    shell.settle();
    const auto& content = shell.notificationCenter.requests.back().content;
    EXPECT_EQ(content.title, title);
    EXPECT_EQ(content.body, body);
    EXPECT_EQ(content.categoryIdentifier, "");
  }
  EXPECT_EQ(shell.notificationCenter.requests.size(), std::size(cases));
  EXPECT_EQ(shell.log.count("error script: files-auto-share failed for b.zip: why"), 1);
}

TEST_F(ScriptMessageTest, PrintingNeedsAWindow) {
  post({{"type", "print"}});
  shell.settle();
  ASSERT_EQ(view->prints.size(), 1U);
  EXPECT_EQ(view->prints[0].marginRight + view->prints[0].marginBottom, 40);
  EXPECT_EQ(view->prints[0].pdfPath, std::nullopt);
  shell.application.key = nullptr;
  model->window.reset();
  post({{"type", "print"}});
  shell.settle();
  EXPECT_EQ(view->prints.size(), 1U);
}

TEST_F(ScriptMessageTest, MainConfigurationHasItsScriptsInOrder) {
  EXPECT_EQ(shell.webViews.names,
            (Calls{"consoleRelayScript", "composePresetScript", "printShimScript", "notificationShimScript",
                   "composeHookScript", "mouseoverScript", "titlePollScript", "highlightHostScript",
                   "mailboxMarkerScript", "replySelectionScript", "filesAutoShareScript"}));
  const PageScripts some([](std::string_view name) {
    return name == "titlePollScript" ? std::optional<std::string>("x") : std::nullopt;
  });
  ASSERT_EQ(some.mainConfiguration()->userScripts.size(), 1U) << "what isn't shipped is left out";
  EXPECT_EQ(shell.scripts.mainConfiguration()->userScripts[0],
            shell.scripts.composeConfiguration()->userScripts[0])
      << "a script is made once";
}

TEST_F(ScriptMessageTest, ScriptsRunAtTheirTimeInTheirFrames) {
  std::map<std::string, std::pair<bool, bool>> placement; // at the start, in the main frame only
  for (const auto& list : {shell.scripts.mainConfiguration()->userScripts,
                           shell.scripts.composeConfiguration()->userScripts, shell.scripts.popupScripts({})})
    for (const auto& script : list)
      placement[script->name] = {script->time == platform::InjectionTime::documentStart,
                                 script->mainFrameOnly};
  const std::map<std::string, std::pair<bool, bool>> expected = {
      {"consoleRelayScript", {true, false}},   {"composePresetScript", {true, false}},
      {"printShimScript", {true, true}},       {"notificationShimScript", {true, true}},
      {"composeHookScript", {true, true}},     {"mouseoverScript", {true, true}},
      {"titlePollScript", {false, true}},      {"highlightHostScript", {false, false}},
      {"mailboxMarkerScript", {false, true}},  {"replySelectionScript", {false, false}},
      {"filesAutoShareScript", {false, true}}, {"chromeRemoverScript", {false, true}},
      {"sendWatcherScript", {false, true}},    {"discardWatcherScript", {false, true}},
  };
  EXPECT_EQ(placement, expected);
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

TEST_F(ScriptMessageTest, ConsoleAndFailuresAreLogged) {
  post({{"type", "consoleLog"}, {"message", "[log] x"}}, "null", false);
  EXPECT_EQ(shell.log.count("debug script: JS log: [log] x"), 1);
  post(
      {{"type", "ondrelFilesAutoShare"}, {"status", "failed"}, {"filename", "a.mov"}, {"reason", "timeout"}});
  post({{"type", "ondrelFilesAutoShare"}});
  post({{"type", "ondrelFilesAutoShare"}, {"status", "success"}, {"filename", "a.mov"}});
  EXPECT_EQ(shell.log.count("error script: files-auto-share failed for a.mov: timeout"), 1);
  EXPECT_EQ(shell.log.count("error script: files-auto-share failed for the file: "), 1);
}

} // namespace
} // namespace ondrel::web
