#include "CoordinatorTest.h"

namespace ondrel::web {
namespace {

using namespace std::chrono_literals;
using platform::Modifiers;
using platform::NavigationAction;
using platform::NavigationPolicy;
using platform::NavigationResponse;
using platform::NavigationType;
using platform::WebError;

const WebError refused{WebError::Domain::network, WebError::cannotConnectToHost, "refused"};

class NavigationTest : public CoordinatorTest {
 protected:
  template <class Request>
  NavigationPolicy decide(const Request& request) {
    std::optional<NavigationPolicy> answer;
    engine().decidePolicy(request,
                          {[&](NavigationPolicy policy) { answer = policy; }, NavigationPolicy::cancel});
    return answer.value();
  }

  std::shared_ptr<platform::WebView> popup(const std::optional<std::string>& url, bool followsUser = true) {
    platform::NewWindowRequest request;
    request.followsUser = followsUser;
    request.action.url = url;
    request.action.gesture = gesture;
    request.makeWebView = [this](std::vector<std::shared_ptr<const platform::UserScript>> scripts) {
      popupScripts.clear();
      for (const auto& script : scripts)
        popupScripts.push_back(script->name);
      auto made = std::make_shared<support::FakeWebView>();
      made->handlers.insert("ondrel"); // as the opener's engine has left it
      return made;
    };
    return engine().createWebView(std::move(request));
  }

  Calls popupScripts;
  std::uint64_t gesture = 0; // of the user's next press, as the engine counts them
};

TEST_F(NavigationTest, ModifiersOpenTabsAndWindows) {
  const struct {
    std::uint32_t flags;
    bool opens;
    bool inTab;
    bool activates;
  } cases[] = {
      {0, false, false, false},
      {Modifiers::shift | Modifiers::option, false, false, false},
      {Modifiers::command, true, true, false},
      {Modifiers::command | Modifiers::shift, true, true, true},
      {Modifiers::command | Modifiers::option, true, false, false},
      {Modifiers::command | Modifiers::option | Modifiers::shift, true, false, true},
  };
  const auto home = shell.application.all.front();
  for (const auto& each : cases) {
    shell.application.setKey(home);
    const auto before = windows();
    const NavigationAction action{
        NavigationType::linkActivated, {each.flags}, "https://x.example/", true, ++gesture};
    const auto policy = decide(action);
    EXPECT_EQ(policy, each.opens ? NavigationPolicy::cancel : NavigationPolicy::download) << each.flags;
    EXPECT_EQ(windows(), before + (each.opens ? 1 : 0)) << each.flags;
    decide(action);
    EXPECT_EQ(windows(), before + (each.opens ? 1 : 0)) << "a page may ask often, the user clicked once";
    if (!each.opens)
      continue;
    const auto opened = shell.application.last();
    EXPECT_EQ(*newest()->urlString, "https://x.example/");
    EXPECT_EQ(opened->group == home->group, each.inTab) << each.flags;
    EXPECT_EQ(shell.application.key == opened, each.activates) << each.flags;
    EXPECT_EQ(shell.webView(newest())->loads, (Calls{"https://x.example/"}))
        << "it loads in the background too";
  }
  EXPECT_EQ(decide(NavigationAction{NavigationType::other, {Modifiers::command}, "https://x.example/"}),
            NavigationPolicy::allow);
}

TEST_F(NavigationTest, ResponsesBecomeDownloadsAndAMainFrameStaysOnTheWeb) {
  const auto download = NavigationPolicy::download;
  const auto allow = NavigationPolicy::allow;
  const std::pair<NavigationResponse, NavigationPolicy> cases[] = {
      {{"https://x/", true, "ATTACHMENT; filename=x", "text/plain", true}, download},
      {{"https://x/", false, "attachment", "text/plain", true}, allow},
      {{"https://x/", true, "inline; attachment", "text/plain", true}, allow},
      {{"https://x/", true, "inline", "text/plain", false}, download},
      {{"https://x/", true, std::nullopt, "text/plain", true}, allow},
      {{"blob:https://x/1", false, std::nullopt, "text/html", true, false}, allow},
      {{"blob:https://x/1", false, std::nullopt, "text/html", true, true}, NavigationPolicy::cancel},
  };
  for (const auto& [response, policy] : cases)
    EXPECT_EQ(decide(response), policy)
        << response.url << " " << response.contentDisposition.value_or("none");
  EXPECT_EQ(decide(NavigationAction{NavigationType::other, {}, "file:///etc/passwd"}),
            NavigationPolicy::cancel);
  EXPECT_EQ(decide(NavigationAction{NavigationType::linkActivated, {}, "blob:https://x/1"}), allow)
      << "a frame's, or a download";
}

TEST_F(NavigationTest, WhatFailedIsTriedAgainWithGrowingDelays) {
  const std::string wanted = "https://app.example.com/mail/";
  model->show(wanted);
  view->loads.clear();
  for (const auto delay : {2s, 4s, 8s, 16s, 30s, 30s}) {
    view->failProvisional(refused);
    EXPECT_EQ(model->pageProblem->kind, PageProblem::Kind::loadFailed);
    shell.loop.advance(delay - 1ms);
    EXPECT_TRUE(view->loads.empty()) << delay.count();
    shell.loop.advance(1ms);
    EXPECT_EQ(view->loads, (Calls{wanted})) << delay.count();
    view->loads.clear();
  }
  view->commit();
  view->finish();
  engine().didFail(refused);
  EXPECT_EQ(model->pageProblem->kind, PageProblem::Kind::loadFailed) << "the page is not whole";
  shell.loop.advance(2s);
  EXPECT_EQ(view->loads, (Calls{wanted}));
  view->commit();
  shell.loop.advance(60s);
  EXPECT_EQ(view->loads.size(), 1U) << "a page that has come ends the retries";
}

TEST_F(NavigationTest, ALoadThatIsAskedForMeanwhileIsNotReplacedByARetry) {
  view->failProvisional(refused);
  model->show("https://app.example.com/slow");
  shell.loop.advance(10s);
  EXPECT_EQ(view->loads, (Calls{"https://app.example.com/slow"}));
  view->failProvisional(refused);
  shell.loop.advance(4s);
  EXPECT_EQ(view->loads, (Calls{"https://app.example.com/slow", "https://app.example.com/slow"}));
}

// The double kept the address of a load that had failed, where the engine goes back to that of the page.
TEST_F(NavigationTest, APageStaysWhenAWayAwayFromItFails) {
  model->show("https://app.example.com/mail/");
  view->commit();
  view->finish();
  view->loads.clear();
  view->goTo("https://elsewhere.example/"); // the user's click
  view->failProvisional(refused);
  EXPECT_EQ(*model->pageProblem,
            (PageProblem{PageProblem::Kind::navigationFailed, "refused", "https://elsewhere.example/"}));
  EXPECT_EQ(*model->urlString, "https://app.example.com/mail/");
  shell.loop.advance(120s);
  EXPECT_TRUE(view->loads.empty()) << "it may hold what the user has written";
  model->tryAgain();
  EXPECT_EQ(view->loads, (Calls{"https://elsewhere.example/"}));
  view->failProvisional(refused);
  model->reload();
  EXPECT_EQ(view->reloads, 1) << "of the page that is shown";
  EXPECT_EQ(model->pageProblem->kind, PageProblem::Kind::none);

  engine().webProcessDidTerminate(true);
  EXPECT_EQ(model->pageProblem->kind, PageProblem::Kind::processTerminated);
  model->reload();
  view->failProvisional(refused);
  view->loads.clear();
  shell.loop.advance(4s);
  EXPECT_EQ(view->loads, (Calls{"https://app.example.com/mail/"})) << "there is nothing left to keep";
}

TEST_F(NavigationTest, LinksToOtherProgramsGoToTheDesktop) {
  const std::pair<std::string, std::string> cases[] = {
      {"tel:+49 30 1234", "tel:+49%2030%201234"},
      {"MAILTO:a@b?subject=\"x\"", "MAILTO:a@b?subject=%22x%22"},
      {"FILE:///etc/passwd", ""},
      {"-tel:1", ""},
      {"tel:1\n2", ""},
  };
  shell.uriLauncher.mailApplication = "phone";
  for (const auto& [url, handedOver] : cases) {
    shell.uriLauncher.opened.clear();
    NavigationAction action{NavigationType::linkActivated, {}, url};
    const auto before = decide(action);
    EXPECT_TRUE(shell.uriLauncher.opened.empty()) << "the page did it by itself: " << url;
    action.isUserGesture = true;
    action.gesture = ++gesture;
    for (int i = 0; i < 3; ++i)
      EXPECT_EQ(decide(action), before) << url;
    if (!handedOver.empty())
      EXPECT_EQ(before, NavigationPolicy::cancel) << "the engine has nothing to load there";
    EXPECT_EQ(shell.uriLauncher.opened, handedOver.empty() ? Calls{} : Calls{handedOver}) << url;
  }
  EXPECT_EQ(model->pageProblem->kind, PageProblem::Kind::none);
  shell.uriLauncher.mailApplication = std::nullopt;
  platform::NewWindowRequest window;
  window.action.url = "tel:1";
  window.action.isUserGesture = true;
  window.action.gesture = ++gesture;
  EXPECT_EQ(engine().createWebView(std::move(window)), nullptr);
  EXPECT_EQ(*model->pageProblem, (PageProblem{PageProblem::Kind::noApplication, "", "tel:1"}));
}

TEST_F(NavigationTest, CancelledAndInterruptedLoadsAreNotRetried) {
  engine().didFailProvisional({WebError::Domain::network, WebError::cancelled, "cancelled"});
  engine().didFail({WebError::Domain::policy, WebError::frameLoadInterrupted, "interrupted"});
  shell.loop.advance(60s);
  EXPECT_TRUE(view->loads.empty());
  EXPECT_EQ(model->pageProblem->kind, PageProblem::Kind::none);
}

TEST_F(NavigationTest, WhatTheUserStopsStaysStopped) {
  view->failProvisional({WebError::Domain::network, WebError::timedOut, "no answer"});
  shell.loop.advance(2s);
  ASSERT_EQ(view->loads.size(), 1U) << "tried again by itself, which goes on";
  EXPECT_TRUE(*model->isLoading);
  model->reloadOrStop();
  shell.loop.advance(1min);
  EXPECT_EQ(view->stops, 1);
  EXPECT_EQ(view->loads.size(), 1U);
  EXPECT_EQ(model->pageProblem->kind, PageProblem::Kind::navigationFailed) << "an empty window says why";
  EXPECT_FALSE(*model->isLoading);
  model->reloadOrStop();
  EXPECT_EQ(view->loads.size(), 2U);

  engine().didCommit();
  model->reloadOrStop();
  shell.settle();
  EXPECT_EQ(view->stops, 2);
  EXPECT_EQ(model->pageProblem->kind, PageProblem::Kind::none) << "what has come of a page stays";
}

TEST_F(NavigationTest, ReportsThePagesState) {
  view->currentTitle = "Inbox";
  view->back = true;
  engine().didCommit();
  EXPECT_TRUE(*model->canGoBack && !*model->canGoForward);
  EXPECT_EQ(*model->title, "New Tab") << "the title comes with the end of the load";
  engine().didFinish();
  EXPECT_EQ(*model->title, "Inbox");
  view->currentTitle = "Other";
  engine().titleDidChange();
  EXPECT_EQ(*model->title, "Inbox") << "what follows the load is reported by message";
  view->currentTitle = "";
  engine().didFinish();
  view->currentTitle = "Late";
  engine().titleDidChange();
  EXPECT_EQ(*model->title, "Late") << "but for a title that was still on its way";
}

TEST_F(NavigationTest, HostOfAnotherOriginIsShown) {
  const std::pair<std::string, std::string> table[] = {
      {"https://beta.example.com/mail/", ""},
      {"https://elsewhere.example:444/mail/", "elsewhere.example:444"},
      {"http://app.example.com/mail/", "app.example.com"},
      {"about:blank", ""},
      {"https://app.example.com@elsewhere.example/", "elsewhere.example"},
  };
  for (const auto& [url, host] : table) {
    view->currentUrl = url;
    engine().didCommit();
    EXPECT_EQ(*model->foreignHost, host) << url;
    view->currentUrl = "https://app.example.com/on-its-way";
    engine().urlDidChange();
    EXPECT_EQ(*model->foreignHost, host) << "until another page has come";
  }
}

TEST_F(NavigationTest, PopupsGoWhereTheyBelong) {
  enum Result { none, window, tab };
  struct Case {
    std::optional<std::string> url;
    bool titled;
    Result result;
    Calls external;
  };
  const std::string raw = "https://1.usercontent.example/raw";
  const Case cases[] = {
      {std::nullopt, true, none, {}},
      {"FILE://localhost/etc/passwd", true, none, {}},
      {"https://app.example.com/settings/", true, tab, {}},
      {"https://app.example.com/mail/Inbox/T.M", true, window, {}},
      {"https://beta.example.com/mail/x", true, window, {}},
      {"https://elsewhere.example/mail/x", true, none, {"https://elsewhere.example/mail/x"}},
      {"https://app.example.com@x.example/mail/", true, none, {"https://app.example.com@x.example/mail/"}},
      {"https://app.example.com:8443/settings/", true, none, {"https://app.example.com:8443/settings/"}},
      {"http://app.example.com/settings/", true, none, {"http://app.example.com/settings/"}},
      {raw + "/mail/", true, none, {raw + "/mail/"}},
      {raw + "?download=1", true, none, {}}, // saved as a file
      {raw + "?download=1", false, none, {raw + "?download=1"}},
  };
  const auto home = shell.application.all.front();
  for (const auto& each : cases) {
    shell.uriLauncher.opened.clear();
    shell.application.setKey(home);
    view->currentTitle = each.titled ? std::optional<std::string>("Subject") : std::nullopt;
    const auto before = windows();
    ++gesture;
    const auto answer = popup(each.url);
    const auto name = each.url.value_or("nil");
    EXPECT_EQ(answer != nullptr, each.result != none) << name;
    EXPECT_EQ(windows(), before + (each.result == none ? 0 : 1)) << name;
    EXPECT_EQ(shell.uriLauncher.opened, each.external) << name;
    if (each.result == none)
      continue;
    const auto opened = shell.application.last();
    EXPECT_EQ(opened->group == home->group, each.result == tab) << name;
    EXPECT_EQ(shell.application.key, opened) << name;
    EXPECT_EQ(newest()->liveWebView(), answer) << "the window shows the engine's own side of the popup";
    EXPECT_TRUE(shell.webView(newest())->loads.empty()) << "the opener's navigation fills it";
    EXPECT_FALSE(*newest()->toolbarVisible);
  }
  shell.settle();
  EXPECT_EQ(shell.http.requests.size(), 1U) << "without a title there is no name to save under";
  EXPECT_TRUE(std::ranges::count(popupScripts, "sendWatcherScript"));
}

TEST_F(NavigationTest, AWindowThatNobodyAskedForIsToldAndCanBeOpened) {
  std::vector<PageNotice> notices;
  const auto subscription = model->noticed.subscribe([&](const auto& notice) { notices.push_back(notice); });
  const auto before = windows();
  EXPECT_EQ(popup("https://app.example.com/print", false), nullptr);
  EXPECT_EQ(popup("https://other.example/", false), nullptr);
  EXPECT_EQ(popup("about:blank", false), nullptr);
  EXPECT_EQ(windows(), before);
  EXPECT_TRUE(shell.uriLauncher.opened.empty());
  ASSERT_EQ(notices.size(), 3U);
  EXPECT_EQ(notices[2].text, "A window was blocked.");
  EXPECT_EQ(notices[2].button, "") << "nobody would fill it";
  ASSERT_EQ(notices[0].button, "Open");
  notices[0].act();
  EXPECT_EQ(windows(), before + 1);
  EXPECT_EQ(*newest()->urlString, "https://app.example.com/print");
  notices[1].act();
  EXPECT_EQ(shell.uriLauncher.opened, Calls{"https://other.example/"});
}

TEST_F(NavigationTest, ALinkNeverReplacesALetter) {
  const std::string letter = "https://app.example.com/mail/Inbox/compose?u=1";
  const auto home = shell.application.all.front();
  const struct {
    std::string url;
    NavigationType type = NavigationType::linkActivated;
    std::size_t opens = 0;
    Calls external = {};
    bool stays = true;
  } cases[] = {
      {.url = "https://elsewhere.example/x", .external = {"https://elsewhere.example/x"}},
      {.url = "https://1.usercontent.example/raw", .external = {"https://1.usercontent.example/raw"}},
      {.url = "https://app.example.com/settings/", .opens = 1},
      {.url = "https://app.example.com/mail/Inbox/T.M", .opens = 1},
      {.url = letter + "#part", .stays = false},
      // The application's own.
      {.url = "https://app.example.com/mail/", .type = NavigationType::other, .stays = false},
      {.url = "https://app.example.com/mail/", .type = NavigationType::backForward, .stays = false},
  };
  for (const bool isReply : {false, true}) {
    view->currentUrl = isReply ? "https://app.example.com/mail/Inbox/T.M1" : letter;
    engine().didCommit();
    post({{"type", "ondrelWritingChanged"}, {"isWriting", isReply ? "true" : "false"}});
    for (const auto& each : cases) {
      if (isReply && each.url.starts_with(letter))
        continue;
      shell.application.setKey(home);
      shell.uriLauncher.opened.clear();
      const auto before = windows();
      const auto policy = decide(NavigationAction{each.type, {}, each.url, false, ++gesture});
      EXPECT_EQ(policy, each.stays ? NavigationPolicy::cancel : NavigationPolicy::allow) << each.url;
      EXPECT_EQ(windows(), before + each.opens) << each.url;
      EXPECT_EQ(shell.uriLauncher.opened, each.external) << each.url;
      // With a target it goes the same way.
      shell.uriLauncher.opened.clear();
      if (each.stays) {
        ++gesture;
        EXPECT_EQ(popup(each.url) != nullptr, each.opens != 0) << each.url;
        EXPECT_EQ(shell.uriLauncher.opened, each.external) << each.url;
      }
    }
    EXPECT_TRUE(view->loads.empty());
  }
  engine().didCommit();
  EXPECT_EQ(decide(NavigationAction{NavigationType::linkActivated, {}, "https://elsewhere.example/"}),
            NavigationPolicy::allow)
      << "a page that comes has no letter until it says so";
}

TEST_F(NavigationTest, APageMayCloseItsWindow) {
  const std::weak_ptr weak = view;
  engine().didClose();
  EXPECT_EQ(windows(), 0U);
  shell.settle();
  EXPECT_EQ(view->delegate, nullptr);
  EXPECT_TRUE(view->handlers.empty());
  EXPECT_EQ(model->liveWebView(), nullptr);
  view.reset();
  EXPECT_TRUE(weak.expired());
}

TEST_F(NavigationTest, AClickOpensOneWindowAndHandsOverOneLink) {
  for (int click = 1; click <= 2; ++click) {
    ++gesture;
    const auto before = windows();
    for (int i = 0; i < 50; ++i) {
      popup("https://elsewhere.example/" + std::to_string(i));
      popup("https://app.example.com/settings/" + std::to_string(i));
      popup("https://app.example.com/mail/" + std::to_string(i));
    }
    EXPECT_EQ(windows(), before + 1);
    EXPECT_EQ(shell.uriLauncher.opened.size(), static_cast<std::size_t>(click));
  }
  const auto before = windows();
  for (int i = 0; i < 3; ++i)
    post({{"type", "compose"}, {"targetAddress", "https://app.example.com/mail/compose?u=1"}});
  EXPECT_EQ(windows(), before + 3) << "the service's own windows come by message";
}

} // namespace
} // namespace ondrel::web
