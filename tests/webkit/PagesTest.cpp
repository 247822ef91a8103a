// What a web view does beside loading: state, dialogs, cookies, permissions, its end.
#include "support/WebKitTest.h"

#include <sys/stat.h>

#include <random>

namespace ondrel::tests {

using PagesTest = WebKitTest;

TEST_F(PagesTest, InteractionStateBringsBackListAndScrollPosition) {
  server_.serve("/one", "one");
  server_.serve("/two", "<p style='height: 5000px'>two</p>");
  EXPECT_EQ(view().interactionState(), std::nullopt) << "nothing was loaded yet";
  loadUrl(server_.url("/one"));
  loadUrl(server_.url("/two"));
  evaluate("scrollTo(0, 1234); 0");
  runFor(600ms); // the engine takes positions over a moment later
  const auto state = view().interactionState();
  ASSERT_TRUE(state);

  view_->setDelegate(nullptr);
  view_.reset();
  delegate_.events.clear();
  ASSERT_TRUE(view().restoreInteractionState(*state, RestoredLoad::page));
  ASSERT_TRUE(waitForEvent("finish"));
  EXPECT_EQ(view().url(), server_.url("/two"));
  EXPECT_TRUE(waitFor([&] { return evaluateToText("scrollY") == "1234"; })) << evaluateToText("scrollY");
  EXPECT_FALSE(view().canGoForward());
  ASSERT_TRUE(view().canGoBack());
  view().goBack();
  ASSERT_TRUE(waitForEvent("finish", 2));
  EXPECT_EQ(view().url(), server_.url("/one"));
}

TEST_F(PagesTest, DamagedInteractionStateIsRefused) {
  loadHtml("<p>page</p>");
  const auto good = view().interactionState();
  ASSERT_TRUE(good);
  std::mt19937 random(1);
  auto other = makeView(delegate_);
  EXPECT_FALSE(other->restoreInteractionState({}, RestoredLoad::page));
  for (int i = 0; i < 300; ++i) {
    auto bytes = *good;
    if (i % 3 == 0)
      bytes.resize(random() % bytes.size());
    else if (i % 3 == 1)
      bytes[random() % bytes.size()] ^= static_cast<std::uint8_t>(1 + random() % 255);
    else
      std::ranges::generate(bytes, random);
    ASSERT_FALSE(other->restoreInteractionState(bytes, RestoredLoad::page)) << i;
  }
  EXPECT_EQ(other->url(), std::nullopt);
  EXPECT_TRUE(other->restoreInteractionState(*good, RestoredLoad::page));
  other->setDelegate(nullptr);
}

// As the toolkit does when a tab is selected.
TEST_F(PagesTest, TheKeyboardStaysInThePageWhenTheFocusIsMovedOn) {
  loadHtml("<p>page</p>");
  auto* container = static_cast<GtkWidget*>(view().nativeView().handle);
  auto* page = gtk_widget_get_first_child(container);
  gtk_widget_grab_focus(page);
  gtk_widget_child_focus(container, GTK_DIR_TAB_FORWARD);
  EXPECT_TRUE(gtk_widget_is_focus(page));
}

TEST_F(PagesTest, DialogsWaitForTheirReply) {
  loadHtml("<p>page</p>");
  std::optional<DoneReply> held;
  delegate_.onConfirm = [&](const std::string&, DoneReply reply) { held.emplace(std::move(reply)); };
  // While the page waits nothing of it answers; other work goes on.
  const auto ask = [&](const std::string& call) {
    return evaluate("said = 'waiting'; setTimeout(() => said = " + call + "); 0");
  };
  const auto answer = [&] {
    waitFor([&] { return evaluateToText("said") != "\"waiting\""; });
    return evaluateToText("said");
  };
  ask("confirm('really?')");
  ASSERT_TRUE(waitFor([&] { return held.has_value(); }));
  std::move (*held)(true);
  EXPECT_EQ(answer(), "true");
  delegate_.onConfirm = nullptr; // drops the reply
  ask("confirm('dropped?')");
  EXPECT_EQ(answer(), "false");
  ask("alert('look') === undefined");
  EXPECT_EQ(answer(), "true");
  for (const auto& typed : {std::optional<std::string>("typed"), std::optional<std::string>()}) {
    delegate_.onPrompt = [&](const std::string& proposed, PromptReply reply) {
      EXPECT_EQ(proposed, "Jane");
      std::move(reply)(typed);
    };
    ask("prompt('Name?', 'Jane')");
    EXPECT_EQ(answer(), typed ? "\"typed\"" : "null");
  }
}

TEST_F(PagesTest, CookiesAreKeptPrivatelyAndCanBeRead) {
  server_.serve("/page", {"page",
                          "text/html",
                          {{"Set-Cookie", "seen=1; Path=/; Max-Age=1000"},
                           {"Set-Cookie", "hidden=a=b; Path=/page; HttpOnly; Max-Age=1000"}}});
  loadUrl(server_.url("/page"));
  auto cookies = run(factory_->cookies().allCookies());
  ASSERT_TRUE(cookies && cookies->size() == 2U);
  std::ranges::sort(*cookies, {}, &Cookie::name);
  const auto& hidden = cookies->at(0);
  EXPECT_EQ(hidden.name + "|" + hidden.value + "|" + hidden.domain + "|" + hidden.path,
            "hidden|a=b|127.0.0.1|/page");
  EXPECT_TRUE(hidden.httpOnly && !hidden.secure && !cookies->at(1).httpOnly);

  const auto mode = [](const std::filesystem::path& path) {
    struct stat status{};
    return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0U;
  };
  EXPECT_EQ(mode(folder_ / "data" / "cookies.sqlite"), 0600U);
  EXPECT_GT(std::filesystem::file_size(folder_ / "data" / "cookies.sqlite"), 0U);
  EXPECT_EQ(mode(folder_ / "data"), 0700U);
  EXPECT_EQ(mode(folder_ / "cache"), 0700U);
}

TEST_F(PagesTest, PermissionsAreDenied) {
  loadHtml(
      "<script>window.said = [];"
      "navigator.geolocation.getCurrentPosition(() => said.push('place'), e => said.push('place ' + e.code));"
      "said.push(navigator.mediaDevices ? 'media' : 'media denied');"
      "Notification.requestPermission().then(p => said.push('notify ' + p)); window.print()</script>");
  EXPECT_TRUE(waitFor([&] { return evaluateToText("said.length") == "3"; })) << evaluateToText("said");
  EXPECT_EQ(evaluateToText("said.sort()"), "[\"media denied\",\"notify denied\",\"place 1\"]");
}

TEST_F(PagesTest, ZoomAndContainer) {
  loadHtml("<p>page</p>");
  const auto width = evaluate("innerWidth");
  view().setPageZoom(2);
  EXPECT_EQ(view().pageZoom(), 2);
  EXPECT_TRUE(waitFor([&] { return evaluate("innerWidth")->as_int64() * 2 == width->as_int64(); }));
  // The container outlives the web view.
  const auto container = glib::share(static_cast<GtkWidget*>(view().nativeView().handle));
  const auto all = glib::adopt(gtk_widget_observe_controllers(gtk_widget_get_first_child(container.get())));
  for (guint i = 0; auto* item = static_cast<GtkEventController*>(g_list_model_get_item(all.get(), i)); ++i)
    if (GTK_IS_GESTURE_ZOOM(glib::adopt(item).get()))
      EXPECT_EQ(gtk_event_controller_get_propagation_phase(item), GTK_PHASE_NONE) << "magnifies besides";
  view_->setDelegate(nullptr);
  view_.reset();
  EXPECT_EQ(gtk_widget_get_first_child(container.get()), nullptr);
}

// The delegate lets go of the web view in the middle of each kind of call.
TEST_F(PagesTest, WebViewMayEndInAnyCall) {
  const auto page = posting("'m'") + "<script>alert('a'); window.open('/popup')</script>";
  server_.serve("/page", page);
  server_.serve("/file", {"x", "text/plain", {{"Content-Disposition", "attachment"}}, 200});
  const auto end = [this] {
    view_->setDelegate(nullptr);
    view_.reset();
  };
  for (const std::string event : {"commit", "message", "alert a", "finish", "create", "download",
                                  "failProvisional NSURLErrorDomain -1004", "action", "response"}) {
    SCOPED_TRACE(event);
    delegate_.onEvent = [&](const std::string& seen) {
      if (seen == event && view_)
        end();
    };
    delegate_.onAction = [&](const NavigationAction&) {
      if (event == "action")
        end();
      return NavigationPolicy::allow;
    };
    delegate_.onResponse = [&](const NavigationResponse&) {
      if (event == "response")
        end();
      return event == "download" ? NavigationPolicy::download : NavigationPolicy::allow;
    };
    auto url = server_.url(event == "download" ? "/file" : "/page");
    if (event.starts_with("fail"))
      url = "http://127.0.0.1:6/";
    view().load(url);
    ASSERT_TRUE(waitFor([&] { return !view_; }));
    runFor(100ms);
    delegate_.events.clear();
  }
}

} // namespace ondrel::tests
