// What gets onto paper, or into a file in its place.
#include "support/Complaints.h"
#include "support/PdfPage.h"
#include "support/WebKitTest.h"

#include <csignal>
#include <fstream>
#include <iterator>
#include <sys/resource.h>

namespace ondrel::tests {

using support::PdfPage;

class PrintingTest : public WebKitTest {
 protected:
  PrintSettings toFile(const std::string& name) const {
    PrintSettings settings;
    settings.pdfPath = folder_ / name;
    return settings;
  }
};

TEST_F(PrintingTest, WritesAFileOrSaysThatItCannot) {
  loadHtml("<p>page</p>");
  const auto settings = toFile("out put.pdf");
  EXPECT_EQ(run(view().print(settings)), PrintResult::done);
  const auto text = [&settings] {
    std::ifstream file(*settings.pdfPath);
    return std::string{std::istreambuf_iterator(file), {}};
  };
  EXPECT_TRUE(text().starts_with("%PDF-")) << text().substr(0, 20);
  EXPECT_NE(text().find("%%EOF"), std::string::npos);
  EXPECT_EQ(run(view().print(toFile("missing/out.pdf"))), PrintResult::failed);

  // A limit for files stands for the full disk. The toolkit's list of recent files may meet it as well.
  support::toleratedComplaint = "recently-used";
  std::ofstream(*settings.pdfPath) << "old";
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit small{100, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  EXPECT_EQ(run(view().print(settings)), PrintResult::failed);
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_EQ(text(), "old");
  EXPECT_EQ(run(view().print(settings)), PrintResult::done);
  EXPECT_TRUE(text().starts_with("%PDF-"));
  support::toleratedComplaint.clear();
}

TEST_F(PrintingTest, PageFillsThePaperBetweenItsMargins) {
  if (!PdfPage::canBeDrawn())
    GTEST_SKIP() << "pdftoppm is missing";
  loadHtml("<style>html, body {margin: 0; background: red; print-color-adjust: exact;"
           " -webkit-print-color-adjust: exact} div {background: red; height: 3000px}</style><div></div>");
  auto uneven = toFile("uneven.pdf");
  uneven.marginTop = 50;
  uneven.marginLeft = 70;
  for (const auto& settings : {toFile("even.pdf"), uneven}) {
    ASSERT_EQ(run(view().print(settings)), PrintResult::done);
    const auto page = PdfPage::draw(*settings.pdfPath);
    ASSERT_TRUE(page);
    const auto margins = page->margins();
    // Edges lie between pixels.
    const auto expectMargin = [](const char* name, int pixels, double points) {
      EXPECT_NEAR(pixels, points * PdfPage::scale, 1) << name;
    };
    expectMargin("left", margins.left, settings.marginLeft);
    expectMargin("top", margins.top, settings.marginTop);
    expectMargin("right", margins.right, settings.marginRight);
    expectMargin("bottom", margins.bottom, settings.marginBottom);
  }
}

} // namespace ondrel::tests
