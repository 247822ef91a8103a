#include "ui/highlights/HighlightsWindow.h"

#include "ShellTest.h"
#include "highlights/HighlightExport.h"
#include "highlights/file/HighlightStore.h"
#include "support/FakeJMAPClient.h"
#include "support/FakeTextFormatting.h"

#include <algorithm>

namespace ondrel::ui {
namespace {

using namespace std::chrono_literals;
using platform::NavigationPolicy;
using platform::NavigationType;

class HighlightsWindowTest : public ShellTest {
 protected:
  void SetUp() override {
    ShellTest::SetUp();
    client.delay = 1s;
    client.answer("Email/query",
                  support::FakeJMAPClient::reply(
                      {R"({"ids":[]})", R"({"list":[{"id":"M1","messageId":["1@x"],"subject":"Tea",)"
                                        R"("mailboxIds":{"B":true},"threadId":"T1"}]})"}));
    client.answer("Mailbox/get", support::FakeJMAPClient::reply({R"({"list":[{"id":"B","name":"Inbox"}]})"}));
    add("a", "first");
  }
  void TearDown() override {
    highlights.reset();
    ShellTest::TearDown();
  }

  void open() {
    highlights->show();
    root = showWidget(static_cast<GtkWidget*>(last()->content.handle));
  }
  std::shared_ptr<support::FakeWindow> last() { return shell.application.all.back(); }
  std::shared_ptr<support::FakeWebView> page() { return shell.webViews.documentViews.back().lock(); }
  std::string part() { return gtk_stack_get_visible_child_name(GTK_STACK(find(root, "highlights-content"))); }
  NavigationPolicy decide(NavigationType type, std::optional<std::string> url) {
    auto answer = NavigationPolicy::download;
    page()->delegate->decidePolicy(
        platform::NavigationAction{.type = type, .modifiers = {}, .url = std::move(url)},
        platform::PolicyReply([&](NavigationPolicy policy) { answer = policy; }, NavigationPolicy::cancel));
    return answer;
  }

  void add(const std::string& id, const std::string& text) {
    store.add({id, "T1", text, "", "", 0, static_cast<double>(++added)}, "1@x");
  }
  // What the engine tells of a load.
  void finishLoad() {
    page()->delegate->didCommit();
    page()->delegate->didFinish();
    shell.settle();
  }
  bool shows(const std::string& text) { return page()->documents.back().contains(text); }
  bool showsSoon(const std::string& text) {
    return runUntil([&] {
      shell.settle();
      finishLoad();
      return shows(text);
    });
  }
  void search(const std::string& text) {
    gtk_editable_set_text(GTK_EDITABLE(find(root, "highlights-search")), text.c_str());
  }

  highlights::HighlightStore store{shell.files, shell.files};
  int added = 0;
  support::FakeJMAPClient client;
  jmap::MailQueries mail{client, shell.settings, [] {}};
  support::FakeTextFormatting formatting;
  highlights::HighlightExport highlightExport{{.store = store,
                                               .mail = mail,
                                               .settings = shell.settings,
                                               .application = shell.application,
                                               .panels = shell.panels,
                                               .files = shell.files,
                                               .textFormatting = formatting,
                                               .iconPNG = ""}};
  int exports = 0;
  std::vector<std::pair<std::string, std::optional<std::string>>> navigated;
  std::optional<HighlightsWindow> highlights = std::optional<HighlightsWindow>(
      std::in_place,
      HighlightsWindow::Services{
          .application = shell.application,
          .webViews = shell.webViews,
          .defaults = shell.defaults,
          .store = store,
          .highlightExport = highlightExport,
          .exportHighlights = [this] { ++exports; },
          .navigate = [this](const auto& url, const auto& id) { navigated.emplace_back(url, id); }});
  GtkWidget* root = nullptr;
};

TEST_F(HighlightsWindowTest, ShowsTheListAndFollowsIt) {
  open();
  EXPECT_EQ(last()->identifier(), "highlights");
  EXPECT_EQ(last()->title, "Highlights");
  EXPECT_TRUE(last()->attributes.standalone);
  EXPECT_EQ(part(), "loading");
  shell.loop.advance(2s);
  ASSERT_TRUE(page());
  ASSERT_EQ(page()->documents.size(), 1U);
  EXPECT_TRUE(shows("Tea</a>") && shows("<mark>first</mark>") && !shows("Import Highlights"));
  EXPECT_EQ(part(), "loading") << "nothing is there to see before the page is";
  finishLoad();
  EXPECT_EQ(part(), "page");

  highlights->show();
  EXPECT_EQ(shell.application.all.size(), 1U) << "there is one";
  add("b", "second");
  shell.loop.advance(1s);
  EXPECT_TRUE(shows("<mark>second</mark>"));
  EXPECT_EQ(part(), "page") << "the list stays in sight";
  finishLoad();
  store.removeAll();
  shell.settle();
  EXPECT_TRUE(shows("No highlights yet.")) << "at once";
  finishLoad();

  page()->delegate->webProcessDidTerminate(true);
  EXPECT_EQ(part(), "stopped");
  click(buttonWithLabel(root, "Reload"));
  shell.settle();
  EXPECT_EQ(page()->documents.size(), 4U);

  last()->close();
  EXPECT_FALSE(page()) << "its page ends with it";
  open();
  shell.loop.advance(1s);
  EXPECT_EQ(page()->documents.size(), 1U);
}

TEST_F(HighlightsWindowTest, KeepsThePlaceOfItsReader) {
  for (const auto* each : {"b", "c", "d"})
    add(each, each);
  open();
  shell.loop.advance(2s);
  finishLoad();
  // The second entry, that is "c", has been scrolled to. What the page says comes late.
  page()->answer = [](const std::string&) { return boost::json::value{{"entry", 1}, {"top", -4.5}}; };
  add("e", "e");
  store.remove("c", "1@x");
  shell.loop.advance(1s);
  ASSERT_EQ(page()->documents.size(), 2U);
  ASSERT_EQ(page()->evaluations.size(), 1U);
  finishLoad();
  ASSERT_EQ(page()->evaluations.size(), 2U);
  EXPECT_TRUE(page()->evaluations[1].contains(")[2]") && page()->evaluations[1].contains("-4.5"))
      << "e, d, b: the first behind it that is left\n"
      << page()->evaluations[1];

  // What comes during a load waits for its end, and a page that hangs holds nothing up.
  page()->hangs = true;
  add("f", "f");
  shell.loop.advance(1s);
  EXPECT_EQ(page()->documents.size(), 3U);
  add("g", "g");
  add("h", "h");
  shell.loop.advance(1s);
  EXPECT_EQ(page()->documents.size(), 3U);
  finishLoad();
  shell.loop.advance(1s);
  EXPECT_EQ(page()->documents.size(), 4U);
  EXPECT_TRUE(shows("<mark>h</mark>"));
}

TEST_F(HighlightsWindowTest, SearchesAndExports) {
  add("b", "Straße and <b>bold</b>");
  open();
  auto* entry = find(root, "highlights-search");
  EXPECT_TRUE(hasAccessibleLabel(entry, "Search Highlights"));
  shell.loop.advance(2s);
  finishLoad();
  auto* button = find(root, "search-highlights");
  gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(button), TRUE);
  search("STRASSE");
  EXPECT_TRUE(showsSoon(" — 1 highlight<") && shows("bold") && !shows("first"));
  search("nothing of it");
  EXPECT_TRUE(showsSoon("No highlights match the search."));
  EXPECT_EQ(page()->evaluations.size(), 0U) << "results start at the top";
  gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(button), FALSE);
  EXPECT_TRUE(showsSoon("first") && shows("bold")) << "closing the search brings all back";
  click(find(root, "export-highlights"));
  EXPECT_EQ(exports, 1);
  store.removeAll();
  EXPECT_FALSE(gtk_widget_get_sensitive(button)) << "there is nothing to search";
  EXPECT_FALSE(gtk_widget_get_sensitive(find(root, "export-highlights"))) << "nor to export";
}

TEST_F(HighlightsWindowTest, SaysThatTheServerCantBeReachedAndTriesAgain) {
  client.session = std::unexpected(jmap::JMAPError{jmap::JMAPError::Kind::transport, "refused"});
  open();
  shell.loop.advance(2s);
  finishLoad();
  EXPECT_TRUE(shows("Message not looked up") && shows("<mark>first</mark>"));
  const auto saysSo = [this] {
    const auto texts = visibleTexts(root);
    return std::ranges::count(texts, "The mail server can't be reached.") == 1;
  };
  EXPECT_TRUE(saysSo());
  EXPECT_FALSE(shows("can't be reached")) << "once is enough";
  client.session = support::FakeJMAPClient().session;
  click(buttonWithLabel(root, "Try Again"));
  EXPECT_FALSE(saysSo());
  EXPECT_TRUE(gtk_widget_get_visible(find(root, "highlights-working")));
  shell.loop.advance(3s);
  EXPECT_EQ(page()->documents.size(), 2U) << "once: what is the same is not loaded again";
  EXPECT_TRUE(shows("Tea</a>"));
  EXPECT_FALSE(saysSo() || gtk_widget_get_visible(find(root, "highlights-working")));
}

TEST_F(HighlightsWindowTest, IsReadableInANarrowWindowAndLargeLetters) {
  const PseudoLocale pseudo;
  client.session = std::unexpected(jmap::JMAPError{jmap::JMAPError::Kind::transport, "9"});
  open();
  shell.loop.advance(2s);
  finishLoad();
  gtk_toggle_button_set_active(GTK_TOGGLE_BUTTON(find(root, "search-highlights")), TRUE);
  expectReadable(root);
}

TEST_F(HighlightsWindowTest, ClosedWhileItLoadsItIsGone) {
  open();
  last()->close();
  shell.loop.advance(1min);
  EXPECT_TRUE(shell.webViews.documentViews.empty());
  open();
  EXPECT_EQ(part(), "loading");
}

TEST_F(HighlightsWindowTest, LinksBringTheirMessageUpAndTheListStays) {
  open();
  shell.loop.advance(2s);
  EXPECT_EQ(decide(NavigationType::other, "about:blank"), NavigationPolicy::allow);
  EXPECT_EQ(decide(NavigationType::other, "https://dropped.example/"), NavigationPolicy::cancel);
  EXPECT_EQ(decide(NavigationType::other, "file:///etc/passwd"), NavigationPolicy::cancel);
  EXPECT_TRUE(navigated.empty());

  const std::pair<std::string, std::optional<std::string>> links[] = {
      {"https://app.example.com/mail/In%20box/T123.M456?u=1", "M456"},
      {"https://app.example.com/mail/a.b.c", "c"},
      {"https://app.example.com/mail/T123./", "T123"},
      {"https://project.example/", std::nullopt},
  };
  for (const auto& link : links) {
    EXPECT_EQ(decide(NavigationType::linkActivated, link.first), NavigationPolicy::cancel);
    ASSERT_FALSE(navigated.empty());
    EXPECT_EQ(navigated.back(), link);
  }
  const auto count = navigated.size();
  for (const auto* none : {"about:blank", "javascript:alert(1)", "file:///etc/passwd", "mailto:a@b"})
    EXPECT_EQ(decide(NavigationType::linkActivated, none), NavigationPolicy::cancel) << none;
  EXPECT_EQ(navigated.size(), count);
}

TEST_F(HighlightsWindowTest, RemembersItsFrame) {
  open();
  last()->setFrame({30, 40, 700, 500});
  last()->close();
  open();
  EXPECT_EQ(last()->frame(), (platform::Rect{30, 40, 700, 500}));
  last()->setFrame({1, 2, 800, 600});
  shell.application.aboutToQuit.emit();
  last()->close();
  for (const auto* broken : {"1 2 3", "1 2 -3 4", "nan nan nan nan"}) {
    for (const auto& [key, value] : shell.defaults.values)
      shell.defaults.set(key, std::string(broken));
    open();
    EXPECT_EQ(last()->frame().width, 760) << broken;
    last()->close();
  }
}

} // namespace
} // namespace ondrel::ui
