// All highlights as a page in a file, and back from it.
#include "HighlightHandsTest.h"

#include <algorithm>

namespace ondrel::e2e {
namespace {

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
  std::filesystem::remove(file());
  const auto program = start({}, wholeStacks);
  ASSERT_TRUE(waitForPage(*program)) << program->output();
  ASSERT_TRUE(listens()) << program->output();
  const auto window = *windows().begin();
  focus(window);
  press("ctrl+shift+i");
  choose("Open File", exported);
  focus("^Highlights Imported$");
  press("Return");
  EXPECT_TRUE(eventually([] { return !isShown("Highlights Imported"); }));
  EXPECT_TRUE(savedHighlights() == before) << read(file());
  EXPECT_TRUE(eventually([&] { return program->output().contains(" row(s) — 2 marked"); }));
  EXPECT_EQ(quit(*program), 0);
}

} // namespace
} // namespace ondrel::e2e
