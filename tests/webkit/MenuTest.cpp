// The context menu of a page and what shows before one, in the real engine.
#include "support/WebKitTest.h"

#include <adwaita.h>

#include <fstream>
#include <iterator>

namespace ondrel::tests {
namespace {

class MenuTest : public WebKitTest {
 protected:
  struct Delegate final : RecordingDelegate {
    ContextMenu contextMenu(const ContextHit& hit) override {
      hits.push_back(hit);
      return menu;
    }
    void didChoose(MenuAction action, const ContextHit& hit, std::uint64_t) override {
      chosen.emplace_back(action, hit);
    }
    ContextMenu menu;
    std::vector<ContextHit> hits;
    std::vector<std::pair<MenuAction, ContextHit>> chosen;
  };

  GtkWidget* widget() { return static_cast<GtkWidget*>(view().nativeView().handle); }
  bool clickAt(const char* place) { return useMouse(std::string("mousemove ") + place + " click 3"); }
  bool hasHit(std::size_t number) {
    return waitFor([&] { return menu_.hits.size() == number; });
  }
  Delegate menu_;
};

TEST_F(MenuTest, IsAskedForByPointerAndKeyboardAndGivesWhatIsChosenBack) {
  menu_.menu = {{{MenuAction::openInTab, "One"}, {MenuAction::openInBrowser, "Two"}}};
  loadHtml("<body style='margin:0'><a href='https://x.example/a' style='display:block;height:100px'>link</a>"
           "<textarea id=t style='display:block;width:100%;height:100px'></textarea>"
           "<div oncontextmenu='event.preventDefault()' style='height:100px'>own</div>");
  view().setDelegate(&menu_);
  ASSERT_TRUE(clickAt("50 250"));
  runFor(500ms);
  EXPECT_TRUE(menu_.hits.empty()) << "a page's own menu is the page's";
  ASSERT_TRUE(clickAt("50 50"));
  ASSERT_TRUE(hasHit(1));
  EXPECT_EQ(menu_.hits[0], (ContextHit{.linkURL = "https://x.example/a"}));
  runFor(300ms);
  ASSERT_TRUE(useMouse("key Down Return"));
  ASSERT_TRUE(waitFor([&] { return menu_.chosen.size() == 1; }));
  EXPECT_EQ(menu_.chosen[0], std::pair(MenuAction::openInBrowser, menu_.hits[0]));

  evaluate("t.focus()");
  for (const auto* keys : {"key Menu", "key shift+F10"}) {
    const auto before = menu_.hits.size();
    ASSERT_TRUE(useMouse(keys));
    EXPECT_TRUE(hasHit(before + 1)) << keys;
    runFor(300ms);
    EXPECT_TRUE(menu_.hits.back().isEditable);
    ASSERT_TRUE(useMouse("key Escape"));
    runFor(300ms);
  }
  view().setDelegate(nullptr);
}

// The engine's rows can't be chosen as long as the word isn't selected.
TEST_F(MenuTest, AWordIsLearntWhereTheRightButtonHasPutTheCaret) {
  menu_.menu = {{{MenuAction::spelling}}};
  loadHtml(
      "<body style='margin:0'><textarea id=t style='width:100%;height:100px;font-size:40px'></textarea>");
  factory_->spelling().check({"en_US"});
  view().setDelegate(&menu_);
  ASSERT_TRUE(useMouse("mousemove 50 30 click 1 sleep 0.3 type 'mispeled '"));
  ASSERT_TRUE(waitFor([&] { return evaluateToText("t.value").contains("mispeled "); }));
  runFor(1s);
  ASSERT_TRUE(clickAt("50 30"));
  ASSERT_TRUE(hasHit(1));
  runFor(500ms);
  ASSERT_TRUE(useMouse("key Up Return")); // the last of the rows
  EXPECT_TRUE(waitFor([] {
    std::ifstream words(std::string(g_get_user_config_dir()) + "/enchant/en_US.dic");
    return std::string(std::istreambuf_iterator(words), {}) == "mispeled\n";
  }));
  view().setDelegate(nullptr);
}

TEST_F(MenuTest, TheDarkStandsBehindPagesButThoseThatCountOnWhite) {
  auto* style = adw_style_manager_get_default();
  adw_style_manager_set_color_scheme(style, ADW_COLOR_SCHEME_FORCE_DARK);
  const auto isWhite = [this] {
    GdkRGBA color;
    webkit_web_view_get_background_color(WEBKIT_WEB_VIEW(adw_bin_get_child(ADW_BIN(widget()))), &color);
    return color.red > 0.9F;
  };
  EXPECT_FALSE(isWhite()) << "before the first page";
  loadHtml("<p>plain");
  EXPECT_TRUE(waitFor(isWhite));
  for (const auto* page :
       {"", "<body style='background:#123'>own", "<meta name=color-scheme content=dark>x",
        "<script>setTimeout(() => document.body.style.background = '#222', 50)</script>"}) {
    loadHtml(page);
    runFor(400ms);
    EXPECT_FALSE(isWhite()) << page;
  }
  loadHtml("<body><script>setTimeout(() => document.body.append('late'), 100)</script>");
  EXPECT_TRUE(waitFor(isWhite)) << "a page that builds itself";
  adw_style_manager_set_color_scheme(style, ADW_COLOR_SCHEME_DEFAULT);
}

} // namespace
} // namespace ondrel::tests
