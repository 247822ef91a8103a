// All highlights as a page: in a file, back from it, and in a window.
#include "HighlightHandsTest.h"

#include <algorithm>

namespace ondrel::e2e {
namespace {

namespace fs = std::filesystem;

// The last belongs to a message that is gone: it is kept and not listed.
constexpr auto threeHighlights = R"({
"M31@mail.example.org":[{"id":"2b0c4bb4-55b6-4f0e-8f3a-0d5a6c7e8f90","threadId":"T4","exact":"letters aaa",
 "prefix":"is under the stone. The ","suffix":" stand here","occurrenceIndex":0,"createdAt":700000000.5}],
"M36@mail.example.org":[{"id":"5f1c5a52-0d0c-4a53-9f0e-0a4c8d6f2b11","threadId":"T7","exact":"nail",
 "prefix":"the key hangs on the ","suffix":". The oars","occurrenceIndex":0,"createdAt":785000000.25}],
"gone@mail.example.org":[{"id":"9a9b8c7d-6e5f-4a3b-8c2d-1e0f9a8b7c6d","threadId":"T9999","exact":"<lost> & \"found\"",
 "prefix":"","suffix":"","occurrenceIndex":0,"createdAt":600000000.5}]})";

class HighlightTransferTest : public HighlightHandsTest {
 protected:
  void SetUp() override {
    HighlightHandsTest::SetUp();
    write(defaultsFile(), R"({"_defaultClientCheck":false})");
  }

  static bool isShown(const std::string& windowTitle) {
    return std::ranges::any_of(windows(), [&](WindowId window) { return title(window) == windowTitle; });
  }
  // A file panel, with the path typed into it.
  void choose(const std::string& panel, const std::string& path) {
    focus("^" + panel + "$");
    type(path);
    // The panel takes no path while it still looks into the folder that was typed.
    for (int attempt = 0; attempt < 5 && isShown(panel); ++attempt) {
      press("Return");
      if (eventually([&] { return !isShown(panel); }, std::chrono::seconds(3)))
        return;
    }
    EXPECT_FALSE(isShown(panel)) << panel;
  }
  // By the window that was opened for it; closes it.
  void expectAlert(const std::string& heading) {
    focus("^" + heading + "$");
    press("Return");
    EXPECT_TRUE(eventually([&] { return !isShown(heading); })) << heading;
  }
  void import(Process& program, WindowId window, const fs::path& path, const std::string& result) {
    focus(window);
    press("ctrl+shift+i");
    choose("Open File", path);
    expectAlert("Highlights Imported");
    EXPECT_TRUE(program.output().contains("importHighlights: " + result + " from " + path.string()));
  }
};

TEST_F(HighlightTransferTest, TheFileIsAPageForPeopleAndComesBackIntoAnEmptyProfile) {
  write(file(), threeHighlights);
  const auto exported = profile / "My highlights.html";
  {
    const auto program = start({}, wholeStacks);
    const auto window = signIn(*program);
    ASSERT_TRUE(listens()) << program->output();
    press("ctrl+shift+e");
    choose("Save File", exported.string().substr(
                            0, exported.string().rfind('.'))); // the panel has selected it without its end
    ASSERT_TRUE(eventually([&] { return read(exported).ends_with("</html>"); })) << program->output();
    EXPECT_EQ(windows(), std::set<WindowId>{window}) << "nothing is said of a success";
    EXPECT_EQ(quit(*program), 0);
  }
  const auto page = read(exported);
  EXPECT_EQ(count(page, "<div class=\"highlight\">"), 2U);
  EXPECT_TRUE(page.contains(" — 2 highlights</p>"));
  EXPECT_TRUE(page.contains(" You can also use Import Highlights… in the main menu to bring this file back"));
  const auto newer = page.find(">Who has the oars</a>");
  EXPECT_NE(newer, page.npos);
  EXPECT_LT(newer, page.find(">Three times the same sentence</a>"));
  EXPECT_TRUE(page.contains("<a class=\"subject\" href=\"" + address + "mail/Inbox/T7.M36")) << page;

  const auto before = savedHighlights();
  fs::remove(file());
  const auto program = start({}, wholeStacks);
  ASSERT_TRUE(waitForPage(*program)) << program->output();
  ASSERT_TRUE(listens()) << program->output();
  const auto window = *windows().begin();
  import(*program, window, exported, "imported 3, skipped 0");
  EXPECT_TRUE(savedHighlights() == before) << read(file());
  EXPECT_TRUE(eventually([&] { return program->output().contains(" row(s) — 2 marked"); }));
  import(*program, window, exported, "imported 0, skipped 3");
  EXPECT_TRUE(savedHighlights() == before) << read(file());

  write(profile / "other.html", "<p>id=\"ondrel-highlights-data\"</p>");
  focus(window);
  press("ctrl+shift+i");
  choose("Open File", profile / "other.html");
  expectAlert("Nothing to Import");
  EXPECT_EQ(quit(*program), 0);
}

TEST_F(HighlightTransferTest, TheWindowListsThemAndItsLinksLeadToTheirMessages) {
  write(file(), threeHighlights);
  const auto program = start({}, wholeStacks);
  const auto window = signIn(*program);
  ASSERT_TRUE(listens()) << program->output();
  press("ctrl+shift+h");
  const auto list = windowBeside({window});
  ASSERT_NE(list, 0U);
  EXPECT_EQ(title(list), "Highlights");
  waitForSpots(list, markColour, 2);
  constexpr Colour linkColour{0x0a, 0x84, 0xff};
  const auto newest = waitForSpots(list, linkColour, 2);
  click(list, newest.x, newest.y);
  EXPECT_TRUE(sessionBecomes([](const auto& saved) {
    return saved.windows.size() == 1 && saved.windows[0].tabs.size() == 1 &&
           saved.windows[0].tabs[0].urlString.contains("/mail/Inbox/T7.M36");
  })) << read(sessionFile());
  waitForSpots(window, markColour);
  focus(list);
  moveTo(list, -143, 28);
  EXPECT_EQ(spots(list, markColour).size(), 2U) << "the list stays";
  click(list, -143, 28);
  focus("^Save File$");
  press("Escape");
  EXPECT_TRUE(eventually([] { return !isShown("Save File"); }));
  press("Escape");
  EXPECT_TRUE(eventually([&] { return windows() == std::set<WindowId>{window}; }));
  EXPECT_EQ(quit(*program), 0);
}

} // namespace
} // namespace ondrel::e2e
