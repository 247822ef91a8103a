#include "ui/HighlightsWindow.h"

#include "ShellTest.h"
#include "async/Future.h"
#include "highlights/HighlightStore.h"

#include <gdk/gdkkeysyms.h>

namespace ondrel::ui {
namespace {

using namespace std::chrono_literals;
using platform::NavigationPolicy;
using platform::NavigationType;

class HighlightsWindowTest : public ShellTest {
 protected:
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

  highlights::HighlightStore store{shell.files, shell.files};
  int generated = 0;
  int exports = 0;
  std::vector<std::pair<std::string, std::optional<std::string>>> navigated;
  std::optional<HighlightsWindow> highlights = std::optional<HighlightsWindow>(
      std::in_place,
      HighlightsWindow::Services{
          .application = shell.application,
          .webViews = shell.webViews,
          .defaults = shell.defaults,
          .store = store,
          .generateHTML = [this] { return document(&generated); },
          .exportHighlights = [this] { ++exports; },
          .navigate = [this](const auto& url, const auto& id) { navigated.emplace_back(url, id); }});
  GtkWidget* root = nullptr;

 private:
  static async::Task<std::string> document(int* count) {
    const bool slept = co_await async::sleep(1s);
    co_return slept ? "document " + std::to_string(++*count) : "";
  }
};

TEST_F(HighlightsWindowTest, ShowsTheDocumentOfTheMomentOncePerShowing) {
  open();
  EXPECT_EQ(last()->identifier(), "highlights");
  EXPECT_EQ(last()->title, "Highlights");
  EXPECT_TRUE(last()->attributes.standalone);
  EXPECT_EQ(part(), "loading");
  shell.loop.advance(1s);
  ASSERT_TRUE(page());
  EXPECT_EQ(page()->documents, std::vector<std::string>{"document 1"});
  EXPECT_EQ(part(), "loading") << "nothing is there to see before the page is";
  page()->delegate->didCommit();
  EXPECT_EQ(part(), "page");

  highlights->show();
  store.add({"h", "T1", "text", "", ""}, "1@x");
  shell.loop.advance(1min);
  EXPECT_EQ(shell.application.all.size(), 1U) << "there is one";
  EXPECT_EQ(generated, 1);

  page()->delegate->webProcessDidTerminate(true);
  EXPECT_EQ(part(), "stopped");
  click(buttonWithLabel(root, "Reload"));
  EXPECT_EQ(page()->documents.size(), 2U);

  last()->close();
  EXPECT_FALSE(page()) << "its page ends with it";
  open();
  shell.loop.advance(1s);
  EXPECT_EQ(page()->documents, std::vector<std::string>{"document 2"});
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
  shell.loop.advance(1s);
  EXPECT_EQ(decide(NavigationType::other, "about:blank"), NavigationPolicy::allow);
  EXPECT_EQ(decide(NavigationType::other, std::nullopt), NavigationPolicy::allow);
  EXPECT_EQ(decide(NavigationType::other, "https://dropped.example/"), NavigationPolicy::cancel);
  EXPECT_EQ(decide(NavigationType::other, "file:///etc/passwd"), NavigationPolicy::cancel);
  EXPECT_TRUE(navigated.empty());

  const std::pair<std::string, std::optional<std::string>> links[] = {
      {"https://app.example.com/mail/In%20box/T123.M456?u=1", "M456"},
      {"https://app.example.com/mail/a.b.c", "c"},
      {"https://app.example.com/mail/T123", "T123"},
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

TEST_F(HighlightsWindowTest, ExportsWhenThereIsSomething) {
  open();
  auto* button = find(root, "export-highlights");
  EXPECT_TRUE(hasAccessibleLabel(button, "Export Highlights…"));
  EXPECT_STREQ(gtk_widget_get_tooltip_text(button), "Export Highlights to html file.");
  EXPECT_FALSE(gtk_widget_get_sensitive(button));
  store.add({"h", "T1", "text", "", ""}, "1@x");
  EXPECT_TRUE(gtk_widget_get_sensitive(button));
  click(button);
  EXPECT_EQ(exports, 1);
  store.removeAll();
  EXPECT_FALSE(gtk_widget_get_sensitive(button));
}

TEST_F(HighlightsWindowTest, RemembersItsFrame) {
  open();
  last()->setFrame({30, 40, 700, 500});
  last()->close();
  open();
  EXPECT_EQ(last()->frame(), (platform::Rect{30, 40, 700, 500}));
  last()->setFrame({1, 2, 800, 600});
  shell.application.willTerminate.emit();
  last()->close();
  for (const auto* broken : {"", "1 2 3", "x", "1 2 -3 4", "nan nan nan nan"}) {
    for (const auto& [key, value] : shell.defaults.values)
      shell.defaults.set(key, std::string(broken));
    open();
    EXPECT_EQ(last()->frame().width, 760) << broken;
    last()->close();
  }
}

} // namespace
} // namespace ondrel::ui
