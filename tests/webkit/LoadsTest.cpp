#include "support/WebKitTest.h"

#include "async/VirtualEventLoop.h"

namespace ondrel::tests {

class LoadsTest : public WebKitTest {
 protected:
  // Waits for the outcome of a load and a little longer, for what must not come after it.
  std::vector<std::string> eventsOfLoad(const std::string& url) {
    delegate_.events.clear();
    view().load(url);
    waitFor([&] {
      return std::ranges::any_of(
          delegate_.events, [](const auto& event) { return event == "finish" || event.starts_with("fail"); });
    });
    runFor(200ms);
    return delegate_.events;
  }
};

using Events = std::vector<std::string>;

TEST_F(LoadsTest, EachLoadHasOneOutcome) {
  server_.serve("/good", "<title>Good</title>");
  server_.serve("/error", {"<title>Error page</title>", "text/html", {}, 500});
  EXPECT_EQ(eventsOfLoad("http://127.0.0.1:6/"), Events{"failProvisional NSURLErrorDomain -1004"})
      << "nothing listens there";
  EXPECT_EQ(view().url(), std::nullopt);
  EXPECT_EQ(eventsOfLoad(server_.url("/good")), (Events{"commit", "finish"}));
  // A short page can be finished before its title has arrived.
  EXPECT_TRUE(waitFor([&] { return view().title() == "Good"; }));
  EXPECT_EQ(eventsOfLoad("http://no-such-host.invalid/"), Events{"failProvisional NSURLErrorDomain -1003"});
  EXPECT_EQ(view().url(), server_.url("/good")) << "the page that is still shown";
  EXPECT_EQ(eventsOfLoad("http://127.0.0.1:1/"), Events{"failProvisional WebKitErrorDomain 103"});
  EXPECT_EQ(eventsOfLoad("unknown-scheme:x"), Events{"failProvisional WebKitErrorDomain 101"});
  EXPECT_EQ(eventsOfLoad("\xFF\xFE"), Events{"failProvisional WebKitErrorDomain 101"});
  EXPECT_EQ(eventsOfLoad(server_.url("/error")), (Events{"commit", "finish"}))
      << "a status is no failed load";
  EXPECT_EQ(eventsOfLoad(server_.url("/missing")), (Events{"commit", "finish"}));

  server_.serve("/to-blank", {"", "text/html", {{"Location", "about:blank"}}, 302});
  server_.serve("/to-port", {"", "text/html", {{"Location", "http://127.0.0.1:1/"}}, 302});
  EXPECT_EQ(eventsOfLoad(server_.url("/to-blank")), (Events{"commit", "finish"})) << "it is a page";
  EXPECT_EQ(eventsOfLoad(server_.url("/to-port")), Events{"failProvisional WebKitErrorDomain 103"});
}

TEST_F(LoadsTest, PoliciesDecide) {
  server_.serve("/page", "<a id=link href='/linked'>x</a><a id=blank target=_blank href='/linked'>x</a>"
                         "<a id=save download href='/linked'>x</a>");
  server_.serve("/linked", "linked");
  loadUrl(server_.url("/page"));
  EXPECT_EQ(delegate_.actions.back().type, NavigationType::other);
  EXPECT_EQ(delegate_.responses.back().mimeType, "text/html");
  EXPECT_TRUE(delegate_.responses.back().isHttp && delegate_.responses.back().canShowMimeType);

  // Clicks with modifiers on three kinds of links. All are refused: no window, page or download comes of
  // them.
  delegate_.onAction = [](const NavigationAction&) { return NavigationPolicy::cancel; };
  delegate_.events.clear();
  const struct {
    const char* link;
    const char* click;
    std::uint32_t flags;
  } table[] = {
      {"link", "keydown ctrl keydown shift click 1 keyup shift keyup ctrl",
       Modifiers::command | Modifiers::shift},
      {"blank", "keydown ctrl keydown alt click 1 keyup alt keyup ctrl",
       Modifiers::command | Modifiers::option},
      {"save", "keydown ctrl click 1 keyup ctrl", Modifiers::command},
      {"link", "click 2", Modifiers::command},
      {"link", "click 1", 0},
  };
  std::uint64_t lastGesture = 0;
  for (const auto& [link, click, flags] : table) {
    SCOPED_TRACE(std::string(link) + ": " + click);
    delegate_.actions.clear();
    evaluate("for (const a of document.links) a.style = a.id == '" + std::string(link) +
             "' ? 'position: fixed; inset: 0' : 'display: none'; document.body.offsetTop");
    ASSERT_TRUE(useMouse("mousemove 300 250 " + std::string(click)));
    ASSERT_TRUE(waitFor([&] { return !delegate_.actions.empty(); }));
    EXPECT_EQ(delegate_.actions.back().type, NavigationType::linkActivated);
    EXPECT_EQ(delegate_.actions.back().url, server_.url("/linked"));
    EXPECT_TRUE(delegate_.actions.back().modifiers.exactly(flags))
        << delegate_.actions.back().modifiers.flags;
    EXPECT_TRUE(delegate_.actions.back().isUserGesture);
    EXPECT_GT(delegate_.actions.back().gesture, lastGesture) << "each click has its number";
    lastGesture = delegate_.actions.back().gesture;
  }
  evaluate("setTimeout(() => { location = 'tel:1' }, 1500); 0"); // what the program runs counts as a click
  ASSERT_TRUE(waitFor([&] { return delegate_.actions.back().url == "tel:1"; }));
  EXPECT_FALSE(delegate_.actions.back().isUserGesture) << "nobody has clicked";
  runFor(200ms);
  EXPECT_EQ(delegate_.events, Events{});
  EXPECT_EQ(server_.requests("/linked"), 0);

  EXPECT_EQ(eventsOfLoad(server_.url("/linked")), Events{"failProvisional WebKitErrorDomain 102"});
  delegate_.onAction = nullptr;
  delegate_.onResponse = [](const NavigationResponse&) { return NavigationPolicy::cancel; };
  EXPECT_EQ(eventsOfLoad(server_.url("/linked")), Events{"failProvisional WebKitErrorDomain 102"});
}

TEST_F(LoadsTest, NewLoadTakesThePlaceOfTheOld) {
  loadHtml("<p>one</p>");
  server_.serve("/two", "two");
  delegate_.events.clear();
  view().load(server_.url("/page"));
  view().load(server_.url("/two"));
  ASSERT_TRUE(waitForEvent("finish"));
  runFor(100ms);
  EXPECT_EQ(delegate_.count("finish"), 1);
  EXPECT_EQ(view().url(), server_.url("/two"));
  view().load(server_.url("/page"));
  view().stopLoading();
  view().goBack();
  ASSERT_TRUE(waitForEvent("finish", 2));
  EXPECT_EQ(view().url(), server_.url("/page"));
  EXPECT_TRUE(view().canGoForward());
}

TEST_F(LoadsTest, SecondTryOfARestoredPageAddsNothingToItsHistory) {
  server_.serve("/two", {"two", "text/html", {{"Cache-Control", "no-store"}}});
  loadHtml("<p>one</p>");
  loadUrl(server_.url("/page"));
  EXPECT_FALSE(view().canGoBack()) << "the same address again is no other page";
  loadUrl(server_.url("/two"));
  const auto state = view().interactionState();
  ASSERT_TRUE(state);

  server_.goOffline();
  RecordingDelegate delegate;
  const auto restored = makeView(delegate);
  show(*restored);
  ASSERT_TRUE(restored->restoreInteractionState(*state, RestoredLoad::page));
  EXPECT_EQ(restored->url(), server_.url("/two")) << "it tells the address at once";
  ASSERT_TRUE(waitFor([&] { return delegate.errors.size() == 1; }));
  restored->load(server_.url("/two"));
  ASSERT_TRUE(waitFor([&] { return delegate.errors.size() == 2; }));
  server_.goOnline();
  restored->load(server_.url("/two"));
  ASSERT_TRUE(waitFor([&] { return delegate.count("finish") == 1; }));
  EXPECT_EQ(restored->url(), server_.url("/two"));
  EXPECT_FALSE(restored->canGoForward());
  restored->goBack();
  ASSERT_TRUE(waitFor([&] { return delegate.count("finish") == 2; }));
  EXPECT_EQ(restored->url(), server_.url("/page"));
  EXPECT_FALSE(restored->canGoBack());
  restored->setDelegate(nullptr);
}

TEST_F(LoadsTest, ALoadAfterOneWithinTheDocumentNeedNotWaitLong) {
  loadUrl(server_.url("/page"));
  server_.serve("/two", "two");
  view().load(server_.url("/page#place"));
  view().load(server_.url("/two"));
  EXPECT_TRUE(waitFor([&] { return server_.requests("/two") == 1; }, 5s));
}

TEST_F(LoadsTest, AWayBackThatFailedIsTriedAgainInItsPlace) {
  for (const auto* path : {"/one", "/two", "/three"})
    server_.serve(path, {path, "text/html", {{"Cache-Control", "no-store"}}});
  loadUrl(server_.url("/one"));
  loadUrl(server_.url("/two"));
  const auto state = view().interactionState();
  ASSERT_TRUE(state);
  RecordingDelegate delegate;
  const auto other = makeView(delegate); // whose page before must be loaded
  show(*other);
  ASSERT_TRUE(other->restoreInteractionState(*state, RestoredLoad::nothing));
  other->load(server_.url("/three"));
  ASSERT_TRUE(waitFor([&] { return delegate.count("finish") == 1; }));
  EXPECT_EQ(other->url(), server_.url("/three"));

  server_.goOffline();
  other->goBack();
  ASSERT_TRUE(waitFor([&] { return !delegate.errors.empty() && !delegate.errors.back().isCancelled(); }));
  EXPECT_EQ(delegate.errors.back().failingURL, server_.url("/two"));
  EXPECT_EQ(other->url(), server_.url("/three")) << "the page that stays";
  server_.goOnline();
  other->load(server_.url("/two"));
  ASSERT_TRUE(waitFor([&] { return delegate.count("finish") == 2; }));
  EXPECT_EQ(other->url(), server_.url("/two"));
  EXPECT_TRUE(other->canGoBack() && other->canGoForward());
  other->setDelegate(nullptr);
}

// The state of loads alone, in virtual time.
class LoadStatesTest : public testing::Test, protected platform::webkit::WebKitLoads::Listener {
 protected:
  void loadCommitted() override { events.emplace_back("commit"); }
  void loadFinished() override { events.emplace_back("finish"); }
  void loadFailed(const WebError& error, bool provisional) override {
    events.push_back((provisional ? "provisional " : "fail ") + std::to_string(error.code));
    failingURL = error.failingURL;
  }
  void beginLoad(const std::string& url) override { begun.push_back(url); }
  void loadTimedOut(const WebError& error) override {
    // What the engine says of being stopped.
    loads.failed(cancelled, true);
    loads.finished();
    loadFailed(error, true);
  }

  const WebError cancelled{WebError::Domain::network, WebError::cancelled, ""};
  async::VirtualEventLoop loop;
  platform::webkit::WebKitLoads loads{*this};
  Events events;
  Events begun;
  std::string failingURL;
};

TEST_F(LoadStatesTest, SilentServerTimesOutOnce) {
  loads.requested("https://a/");
  loads.started();
  loop.advance(59s);
  EXPECT_EQ(events, Events{});
  loop.advance(1s);
  EXPECT_EQ(events, Events{"provisional -1001"});
  EXPECT_EQ(failingURL, "https://a/");
  loop.advance(1h);
  EXPECT_EQ(events.size(), 1U);
  loads.requested("https://a/");
  loads.started();
  loads.committed("https://a/");
  loop.advance(1h);
  loads.finished();
  EXPECT_EQ(events, (Events{"provisional -1001", "commit", "finish"}));
}

TEST_F(LoadStatesTest, ALoadBeginsWhenTheOneBeforeHasStarted) {
  const std::function<void()> ends[] = {[this] { loads.started(); },
                                        [this] { loads.failed(cancelled, true); },
                                        [this] { loads.refusedByPolicy(); }, [this] { loop.advance(15s); },
                                        [this] {
                                          loads.loadingChanged(false); // it was within the document
                                          loop.advance(1s);
                                        }};
  for (const auto& end : ends) {
    loads.abandoned();
    loads.finished();
    begun.clear();
    for (const auto* url : {"a", "b", "c"})
      loads.requested(url);
    EXPECT_EQ(begun, Events{"a"});
    end();
    EXPECT_EQ(begun, (Events{"a", "c"}));
    EXPECT_EQ(events, Events{}) << "what nobody wants any more isn't told";
  }
  loads.requested("d");
  loads.abandoned();
  loads.started();
  EXPECT_EQ(begun, (Events{"a", "c"}));
}

TEST_F(LoadStatesTest, ThePageBeforeSaysNothingOfTheNext) {
  loads.restored();
  loads.requested("b");
  EXPECT_EQ(begun, Events{}) << "the history's page hasn't started";
  loads.started();
  EXPECT_EQ(begun, Events{"b"});
  loads.committed("a"); // it was on its way
  loads.requested("c");
  loads.failed(cancelled, false); // what "a" was still fetching
  EXPECT_EQ(begun, Events{"b"}) << "nor has this";
  loads.started();
  loads.started();
  EXPECT_EQ(begun, (Events{"b", "c"}));
  loop.advance(60s);
  EXPECT_EQ(events, (Events{"commit", "fail -999", "provisional -1001"}));
}

TEST_F(LoadStatesTest, ReplacedLoadLeavesTheNewOneItsTime) {
  loads.requested("https://a/");
  loads.started();
  loop.advance(30s);
  loads.requested("https://b/");
  loads.failed(cancelled, true);
  loads.finished();
  EXPECT_EQ(events, Events{"provisional -999"});
  loop.advance(59s);
  loads.started();
  EXPECT_EQ(events.size(), 1U);
  loop.advance(1s);
  EXPECT_EQ(events.back(), "provisional -1001");
  loads.requested("https://b/");
  loads.abandoned();
  loop.advance(1h);
  EXPECT_EQ(events.size(), 2U);
}

} // namespace ondrel::tests
