// The context menu of a page, in the real engine.
#include "support/WebKitTest.h"

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

} // namespace
} // namespace ondrel::tests
