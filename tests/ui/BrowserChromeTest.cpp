#include "ShellTest.h"

#include "ui/commands/PrimaryMenu.h"
#include "ui/page/BrowserChrome.h"
#include "web/WindowViewModel.h"

namespace ondrel::ui {
namespace {

using Names = std::vector<std::string>;

class BrowserChromeTest : public ShellTest {
 protected:
  void SetUp() override {
    ShellTest::SetUp();
    start();
    shell.manager->openMainWindow();
    chrome.emplace(services);
    bar = static_cast<GtkWidget*>(chrome->topBar().handle);
  }
  void TearDown() override {
    chrome.reset();
    ShellTest::TearDown();
  }

  bool enabled(const std::string& name) { return gtk_widget_get_sensitive(find(bar, name)); }
  std::string tooltip(const std::string& name) { return gtk_widget_get_tooltip_text(find(bar, name)); }
  std::string text(const std::string& name) { return gtk_label_get_text(GTK_LABEL(find(bar, name))); }
  std::string title() { return text("title"); }

  int newTabs = 0;
  int menus = 0;
  std::vector<CommandGroup> groups{{"Group", {{.title = "Print…", .perform = [] {}}}}};
  PrimaryMenu menu{groups};
  ChromeServices services{menu,
                          shell.settings,
                          [this](const auto& window) { return shell.manager->windows().viewModel(window); },
                          [this] { ++newTabs; },
                          [this] { ++menus; },
                          groups};
  std::optional<BrowserChrome> chrome;
  GtkWidget* bar = nullptr;
};

TEST_F(BrowserChromeTest, EachButtonSaysItsNameAndItsKey) {
  for (const auto& [name, label] : {std::pair("back", "Back"),
                                    {"forward", "Forward"},
                                    {"reload", "Reload"},
                                    {"zoom-out", "Zoom Out"},
                                    {"zoom-default", "Actual Size"},
                                    {"zoom-in", "Zoom In"},
                                    {"new-tab", "New Tab"},
                                    {"menu", "Main Menu"}}) {
    EXPECT_TRUE(hasAccessibleLabel(find(bar, name), label)) << name;
    EXPECT_TRUE(tooltip(name).starts_with(label + std::string(" "))) << tooltip(name);
  }
  EXPECT_EQ(tooltip("zoom-in"), "Zoom In Ctrl++");
}

TEST_F(BrowserChromeTest, FollowsTheTabInFrontAndNoOther) {
  const Names ofTab = {"back", "forward", "reload", "zoom-out", "zoom-default", "zoom-in"};
  for (const auto& name : ofTab)
    EXPECT_FALSE(enabled(name)) << name << " without a tab";

  chrome->selectedWindowDidChange(window(0));
  model(0)->title.set("Inbox");
  model(0)->canGoBack.set(true);
  EXPECT_EQ(title(), "Inbox");
  EXPECT_TRUE(enabled("back") && enabled("reload") && enabled("zoom-in") && enabled("zoom-out"));
  EXPECT_FALSE(enabled("forward") || enabled("zoom-default"));
  model(0)->canGoForward.set(true);
  model(0)->canZoomIn.set(false);
  EXPECT_TRUE(enabled("forward") && !enabled("zoom-in"));

  chrome->selectedWindowDidChange(window(1));
  EXPECT_EQ(title(), "New Tab");
  EXPECT_FALSE(enabled("back"));
  EXPECT_TRUE(enabled("zoom-in"));
  model(0)->title.set("Behind");
  EXPECT_EQ(title(), "New Tab");
  click(find(bar, "reload"));
  click(find(bar, "zoom-in"));
  EXPECT_DOUBLE_EQ(*model(0)->initialPageZoom, 1.0);
  EXPECT_DOUBLE_EQ(*model(1)->initialPageZoom, 1.05);
  EXPECT_TRUE(enabled("zoom-default"));

  chrome->selectedWindowDidChange(shell.application.makeWindow({}));
  EXPECT_FALSE(enabled("reload")) << "not a browser's window";
  click(find(bar, "reload"));
}

TEST_F(BrowserChromeTest, ButtonsActOnTheTabInFront) {
  chrome->selectedWindowDidChange(window(0));
  const auto& view = shell.webView(model(0));
  view->finish();
  for (const char* name : {"back", "forward", "reload", "new-tab", "zoom-out", "zoom-out"})
    click(find(bar, name));
  EXPECT_EQ(view->backs, 1);
  EXPECT_EQ(view->forwards, 1);
  EXPECT_EQ(view->reloads, 1);
  EXPECT_EQ(newTabs, 1);
  EXPECT_DOUBLE_EQ(view->zoom, 0.9);
  click(find(bar, "zoom-default"));
  EXPECT_DOUBLE_EQ(view->zoom, 1.0);
  view->goTo("https://app.example.com/slow");
  EXPECT_TRUE(hasAccessibleLabel(find(bar, "reload"), "Stop"));
  click(find(bar, "reload"));
  EXPECT_EQ(view->stops, 1);
}

TEST_F(BrowserChromeTest, ATabWithoutAToolbarKeepsItsTitleAndTheMenu) {
  model(0)->toolbarVisible.set(false);
  model(0)->title.set("Compose");
  chrome->selectedWindowDidChange(window(0));
  EXPECT_EQ(visibleTexts(bar), Names{"Compose"});
  showWidget(bar);
  for (const char* name : {"back", "reload", "zoom-in", "new-tab"})
    EXPECT_FALSE(gtk_widget_get_mapped(find(bar, name))) << name;
  EXPECT_TRUE(gtk_widget_get_mapped(find(bar, "menu")));
  chrome->selectedWindowDidChange(window(1));
  EXPECT_TRUE(runUntil([&] { return gtk_widget_get_mapped(find(bar, "zoom-in")); }))
      << "an ordinary tab again";
}

TEST_F(BrowserChromeTest, APageOfAnotherOriginShowsItsHost) {
  chrome->selectedWindowDidChange(window(0));
  EXPECT_FALSE(gtk_widget_get_visible(find(bar, "host")));
  model(0)->toolbarVisible.set(false);
  model(0)->foreignHost.set("xn--pple-43d.example:8443");
  EXPECT_TRUE(gtk_widget_get_visible(find(bar, "host"))) << "also in a window that a page has opened";
  EXPECT_EQ(text("host"), "xn--pple-43d.example:8443");
  model(0)->foreignHost.set("");
  EXPECT_FALSE(gtk_widget_get_visible(find(bar, "host")));
}

TEST_F(BrowserChromeTest, ALongTitleAndANarrowWindowLeaveRoomForEachOther) {
  chrome->selectedWindowDidChange(window(0));
  model(0)->title.set(
      "A rather long title of a page that has much to say, and says it all before it is done");
  const auto mapped = [&](const char* name) { return gtk_widget_get_mapped(find(bar, name)); };
  for (const auto& [width, zoom] : {std::pair(360, false), {500, false}, {800, true}}) {
    showWidget(bar, width);
    EXPECT_TRUE(runUntil([&] { return mapped("zoom-in") == zoom && mapped("new-tab") == width > 400; }))
        << width;
    EXPECT_EQ(gtk_widget_get_width(GTK_WIDGET(topLevels.back().get())), width) << "it fits";
    for (const char* name : {"back", "forward", "reload", "menu"})
      EXPECT_TRUE(mapped(name)) << name << " at " << width;
  }
}

TEST_F(BrowserChromeTest, TheMenuTellsThatItOpensAndReturnsTheKeyboardToThePage) {
  auto* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  gtk_box_append(GTK_BOX(box), bar);
  gtk_box_append(GTK_BOX(box), content(0));
  showWidget(box);
  chrome->selectedWindowDidChange(window(0));
  auto* button = find(bar, "menu");
  EXPECT_EQ(menus, 0);
  gtk_menu_button_popup(GTK_MENU_BUTTON(button));
  EXPECT_EQ(menus, 1);
  ASSERT_NE(gtk_window_get_focus(topLevels[0].get()), pages[0].get());
  gtk_menu_button_popdown(GTK_MENU_BUTTON(button));
  EXPECT_EQ(menus, 1);
  EXPECT_TRUE(runUntil([&] { return gtk_window_get_focus(topLevels[0].get()) == pages[0].get(); }));
}

} // namespace
} // namespace ondrel::ui
