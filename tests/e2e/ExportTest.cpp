// A page as a file, from the command to the paper.
#include "UserHandsTest.h"
#include "support/PdfPage.h"

namespace ondrel::e2e {
namespace {

namespace fs = std::filesystem;
using support::PdfPage;

class ExportTest : public UserHandsTest {
 protected:
  void SetUp() override {
    if (!PdfPage::canBeDrawn())
      GTEST_SKIP() << "pdftoppm is missing";
    UserHandsTest::SetUp();
    folder = profile / "downloads"; // where the panel opens first
    fs::create_directory(folder);
    write(profile / "config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"" + folder.string() + "\"\n");
  }

  void openPanel() {
    press("ctrl+shift+p");
    const auto panel = windowBeside({main});
    ASSERT_NE(panel, 0U);
    focus(panel);
  }

  fs::path folder;
  WindowId main = 0;
};

TEST_F(ExportTest, WritesThePageWithItsMarginsUnderItsTitleIfThePanelIsAccepted) {
  const auto program = start({}, wholeStacks);
  main = signIn(*program);
  press("j o");
  ASSERT_TRUE(eventually([&] { return title(main) == "Plans for the spring workshop"; })) << title(main);

  openPanel();
  press("Escape");
  ASSERT_TRUE(eventually([&] { return windows() == std::set{main}; }));
  EXPECT_TRUE(fs::is_empty(folder));

  focus(main);
  openPanel();
  press("Return");
  const auto file = folder / "Plans for the spring workshop.pdf";
  ASSERT_TRUE(eventually([&] { return read(file).contains("%%EOF"); })) << program->output();
  EXPECT_TRUE(read(file).starts_with("%PDF-"));
  const auto page = PdfPage::draw(file);
  ASSERT_TRUE(page);
  // The page's background fills the paper between them.
  const auto margins = page->margins();
  constexpr int margin = 20 * PdfPage::scale;
  EXPECT_NEAR(margins.left, margin, 1);
  EXPECT_NEAR(margins.top, margin, 1);
  EXPECT_NEAR(margins.right, margin, 1);
  EXPECT_NEAR(margins.bottom, margin, 1);
  EXPECT_EQ(quit(*program), 0);
}

} // namespace
} // namespace ondrel::e2e
