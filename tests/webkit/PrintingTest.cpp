// What gets onto paper, or into a file in its place.
#include "WebKitTest.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

namespace ondrel::tests {

namespace {

// The first page of a PDF file as colours, `scale` pixels a point.
struct Raster {
  int width = 0;
  int height = 0;
  std::string rgb;

  static constexpr int scale = 2;
  static std::optional<Raster> of(const std::filesystem::path& pdf) {
    const auto image = pdf.string() + ".image";
    const auto command = "pdftoppm -r " + std::to_string(72 * scale) + " -f 1 -singlefile '" + pdf.string() +
                         "' '" + image + "'";
    if (std::system(command.c_str()) != 0)
      return std::nullopt;
    std::ifstream file(image + ".ppm", std::ios::binary);
    Raster result;
    std::string format;
    int most = 0;
    file >> format >> result.width >> result.height >> most;
    file.get();
    result.rgb.assign(std::istreambuf_iterator(file), {});
    const auto size = static_cast<std::size_t>(result.width) * static_cast<std::size_t>(result.height) * 3;
    return format == "P6" && most == 255 && result.rgb.size() == size ? std::optional(result) : std::nullopt;
  }

  bool isRed(int x, int y) const {
    const auto at = static_cast<std::size_t>(y * width + x) * 3;
    const auto part = [&](std::size_t index) { return static_cast<unsigned char>(rgb[at + index]); };
    return part(0) > 200 && part(1) < 100 && part(2) < 100;
  }
};

} // namespace

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
  std::ifstream file(*settings.pdfPath);
  const std::string content{std::istreambuf_iterator(file), {}};
  EXPECT_TRUE(content.starts_with("%PDF-")) << content.substr(0, 20);
  EXPECT_NE(content.find("%%EOF"), std::string::npos);
  EXPECT_EQ(run(view().print(toFile("missing/out.pdf"))), PrintResult::failed);
}

TEST_F(PrintingTest, PageFillsThePaperBetweenItsMargins) {
  if (std::system("command -v pdftoppm >/dev/null") != 0)
    GTEST_SKIP() << "pdftoppm is missing";
  loadHtml("<style>html, body {margin: 0; background: red; print-color-adjust: exact;"
           " -webkit-print-color-adjust: exact} div {background: red; height: 3000px}</style><div></div>");
  auto uneven = toFile("uneven.pdf");
  uneven.marginTop = 50;
  uneven.marginLeft = 70;
  for (const auto& settings : {toFile("even.pdf"), uneven}) {
    ASSERT_EQ(run(view().print(settings)), PrintResult::done);
    const auto page = Raster::of(*settings.pdfPath);
    ASSERT_TRUE(page);
    int left = page->width;
    int right = 0;
    int top = page->height;
    int bottom = 0;
    for (int y = 0; y < page->height; ++y)
      for (int x = 0; x < page->width; ++x)
        if (page->isRed(x, y)) {
          left = std::min(left, x);
          right = std::max(right, x + 1);
          top = std::min(top, y);
          bottom = std::max(bottom, y + 1);
        }
    // Edges lie between pixels.
    const auto expectMargin = [](const char* name, int pixels, double points) {
      EXPECT_NEAR(pixels, points * Raster::scale, 1) << name;
    };
    expectMargin("left", left, settings.marginLeft);
    expectMargin("top", top, settings.marginTop);
    expectMargin("right", page->width - right, settings.marginRight);
    expectMargin("bottom", page->height - bottom, settings.marginBottom);
  }
}

} // namespace ondrel::tests
