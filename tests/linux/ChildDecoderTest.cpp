#include "platform/linux/decoding/ChildDecoder.h"

#include "async/sleep.h"
#include "platform/linux/decoding/GtkDocumentPrinter.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "support/MainLoop.h"
#include "support/PdfPage.h"
#include "support/RunToEnd.h"
#include "support/TemporaryFolder.h"

#include <cairo-pdf.h>
#include <gdk-pixbuf/gdk-pixbuf.h>
#include <gtest/gtest.h>
#include <gtk/gtk.h>

#include <array>
#include <cstdio>
#include <filesystem>

namespace ondrel::platform::decoding {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using Kind = DecodeError::Kind;

// Red above, blue below.
std::string image(const char* type, int width = 40, int height = 20) {
  const auto pixels = glib::adopt(gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, width, height));
  gdk_pixbuf_fill(pixels.get(), 0xFF0000FF);
  const auto lower = glib::adopt(gdk_pixbuf_new_subpixbuf(pixels.get(), 0, height / 2, width, height / 2));
  gdk_pixbuf_fill(lower.get(), 0x0000FFFF);
  char* buffer = nullptr;
  gsize size = 0;
  EXPECT_TRUE(gdk_pixbuf_save_to_buffer(pixels.get(), &buffer, &size, type, nullptr, nullptr));
  const glib::CString owned(buffer);
  return std::string(buffer, size);
}

// As cameras held upright say: the left side is on top.
std::string turnedImage() {
  const auto exif = "\xFF\xE1\0\x22"
                    "Exif\0\0MM\0\x2A\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0"s;
  auto result = image("jpeg");
  return result.insert(2, exif);
}

std::string animation() {
  const auto frame = [](char colour) {
    return "\x21\xF9\4\0\x14\0\0\0\x2C\0\0\0\0\1\0\1\0\0\2\2"s + colour + "\1\0"s;
  };
  return "GIF89a\1\0\1\0\x80\0\0\xFF\0\0\0\0\xFF"s + frame('\x44') + frame('\x4C') + ";";
}

struct Page {
  double width;
  double height;
};
std::string pdf(const std::vector<Page>& pages) {
  std::string result;
  const cairo_write_func_t write = [](void* to, const unsigned char* data, unsigned length) {
    static_cast<std::string*>(to)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
  };
  auto* surface = cairo_pdf_surface_create_for_stream(write, &result, 0, 0);
  auto* painter = cairo_create(surface);
  for (const auto& page : pages) {
    cairo_pdf_surface_set_size(surface, page.width, page.height);
    cairo_rectangle(painter, 0, 0, page.width, page.height);
    cairo_stroke(painter);
    cairo_move_to(painter, 20, 40);
    cairo_set_font_size(painter, 20);
    cairo_show_text(painter, "Dear reader");
    cairo_show_page(painter);
  }
  cairo_destroy(painter);
  cairo_surface_destroy(surface);
  return result;
}

std::string colourAt(const Picture& picture, int x, int y) {
  const auto* pixel = &picture.pixels.at(static_cast<std::size_t>(y * picture.width + x) * 4);
  return pixel[0] > 200 ? "red" : pixel[2] > 200 ? "blue" : "other";
}

class ChildDecoderTest : public testing::Test {
 protected:
  template <class T>
  T wait(async::Task<T> task) {
    std::optional<T> result;
    scope.spawn(support::keepResult(std::move(task), &result));
    EXPECT_TRUE(support::runUntil([&] { return result.has_value(); }));
    return std::move(result).value();
  }
  // A decoder that does what the shell is told.
  DecodeError answerOf(const std::string& script) {
    folder.write("decoder", "#!/bin/sh\n" + script + "\n");
    std::filesystem::permissions(folder.file("decoder"), std::filesystem::perms::owner_all);
    ChildDecoder other(folder.file("decoder"), 300ms);
    const auto result = wait(other.thumbnail("x", DocumentKind::image, 96));
    return result ? DecodeError{Kind::damaged, "it has answered"} : result.error();
  }

  support::TemporaryFolder folder;
  glib::GlibEventLoop loop;
  ChildDecoder decoder{ONDREL_DECODER};
  async::Scope scope;
};

TEST_F(ChildDecoderTest, DrawsThumbnailsOfWhatItCanRead) {
  struct Case {
    const char* what;
    std::string data;
    DocumentKind kind;
    int width;
    int height;
  };
  const Case cases[] = {{"png", image("png"), DocumentKind::image, 40, 20},
                        {"a large one", image("png", 400, 100), DocumentKind::image, 96, 24},
                        {"tiff", image("tiff"), DocumentKind::image, 40, 20},
                        {"turned", turnedImage(), DocumentKind::image, 20, 40},
                        {"gif", animation(), DocumentKind::image, 1, 1},
                        {"svg", "<svg xmlns='http://www.w3.org/2000/svg' width='48' height='24'/>",
                         DocumentKind::image, 48, 24},
                        {"pdf", pdf({{200, 400}}), DocumentKind::pdf, 48, 96}};
  for (const auto& each : cases) {
    const auto picture = wait(decoder.thumbnail(each.data, each.kind, 96));
    ASSERT_TRUE(picture) << each.what << ": " << picture.error().description;
    EXPECT_EQ((*picture)->width, each.width) << each.what;
    EXPECT_EQ((*picture)->height, each.height) << each.what;
  }
  const auto turned = wait(decoder.thumbnail(turnedImage(), DocumentKind::image, 96));
  EXPECT_EQ(colourAt(**turned, 17, 20), "red") << "the top has gone to the right";
  EXPECT_EQ(colourAt(**turned, 2, 20), "blue");
  for (const auto& broken : {""s, "GIF89a"s, image("png").substr(0, 20), "%PDF-1.4 nothing"s})
    for (const auto kind : {DocumentKind::image, DocumentKind::pdf}) {
      const auto picture = wait(decoder.thumbnail(broken, kind, 96));
      EXPECT_TRUE(!picture && picture.error().kind == Kind::damaged) << broken;
    }
}

TEST_F(ChildDecoderTest, KeepsADocumentOpen) {
  folder.write("a.pdf", pdf({{200, 400}, {600, 300}}));
  const auto opened = wait(decoder.open(folder.file("a.pdf"), DocumentKind::pdf));
  ASSERT_TRUE(opened);
  auto& document = **opened;
  EXPECT_EQ(document.pageCount(), 2);
  EXPECT_EQ(document.pageWidth(1), 600);
  const auto text = wait(document.text(1));
  ASSERT_TRUE(text);
  EXPECT_EQ(text->characters.substr(0, 11), U"Dear reader");
  EXPECT_NEAR(text->boxes.at(0).left, 20.0 / 600, 0.01);
  EXPECT_NEAR(text->boxes.at(0).bottom, 40.0 / 300, 0.04);
  EXPECT_TRUE(wait(document.render(1, 1200, 600)));
  const auto huge = wait(document.render(0, 100'000, 100'000));
  EXPECT_TRUE(!huge && huge.error().kind == Kind::tooLarge);

  folder.write("a.gif", animation());
  const auto moving = wait(decoder.open(folder.file("a.gif"), DocumentKind::image));
  ASSERT_TRUE(moving && (*moving)->isAnimation());
  EXPECT_EQ((*moving)->pageCount(), 2);
  EXPECT_EQ((*moving)->frameDelay(0), 200ms);
  const std::array wanted{"blue", "red", "blue"};
  for (std::size_t i = 0; i < wanted.size(); ++i)
    EXPECT_EQ(colourAt(**wait((*moving)->render(i % 2 == 0 ? 1 : 0, 1, 1)), 0, 0), wanted[i]) << i;
  EXPECT_FALSE(wait(decoder.open(folder.path(), DocumentKind::image))) << "a folder";
}

TEST_F(ChildDecoderTest, SurvivesADecoderThatWasTakenOver) {
  struct Case {
    const char* script;
    Kind kind;
  };
  // Header: status, action, length.
  const Case cases[] = {
      {"exit 0", Kind::crashed},
      {"kill -SEGV $$", Kind::crashed},
      {"exec sleep 60", Kind::timedOut},
      {"while :; do :; done", Kind::timedOut},
      {"printf 'no header' >&3", Kind::crashed},
      {"printf '\\1\\0\\0\\0\\1\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0' >&3; sleep 60", Kind::damaged},
      {"printf '\\7\\0\\0\\0\\1\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0' >&3; sleep 60", Kind::crashed},
      {"printf '\\0\\0\\0\\0\\1\\0\\0\\0\\377\\377\\377\\377\\377\\377\\377\\377' >&3; sleep 60",
       Kind::crashed},
      {"printf '\\0\\0\\0\\0\\1\\0\\0\\0\\24\\0\\0\\0\\0\\0\\0\\0' >&3; sleep 60", Kind::timedOut},
      {"printf '\\0\\0\\0\\0\\1\\0\\0\\0\\10\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0\\0' >&3; sleep 60",
       Kind::crashed},
  };
  for (const auto& each : cases)
    EXPECT_EQ(answerOf(each.script).kind, each.kind) << each.script;
  ChildDecoder missing(folder.file("nothing"));
  const auto picture = wait(missing.thumbnail("x", DocumentKind::image, 96));
  EXPECT_TRUE(!picture && picture.error().kind == Kind::unavailable);
}

TEST_F(ChildDecoderTest, IsShutOffFromEverythingElse) {
  std::array<char, 200> line{};
  auto* output = popen(CONFINEMENT_PROBE, "r");
  ASSERT_TRUE(output && std::fgets(line.data(), line.size(), output));
  EXPECT_EQ(pclose(output), 0);
  EXPECT_STREQ(line.data(), "the file no exec\n");
}

TEST_F(ChildDecoderTest, PrintsPagesThatFitThePaper) {
  if (!support::PdfPage::canBeDrawn() || !gtk_init_check())
    GTEST_SKIP() << "needs a display and pdftoppm";
  GtkDocumentPrinter printer(decoder, folder.file("out.pdf"));
  folder.write("wide.pdf", pdf({{2000, 900}}));
  EXPECT_EQ(wait(printer.print(folder.file("wide.pdf"), DocumentKind::pdf, "wide", nullptr)), std::nullopt);
  auto page = support::PdfPage::draw(folder.file("out.pdf"));
  ASSERT_TRUE(page);
  // As wide as the turned paper less its margins, which are a quarter of an inch and 0.56, and in the middle
  // of it.
  const auto dot = support::PdfPage::scale;
  EXPECT_NEAR(page->margins().left, 40 * dot, 2);
  EXPECT_NEAR(page->margins().right, 18 * dot, 2);
  EXPECT_NEAR(page->margins().top, page->margins().bottom, 4);
  EXPECT_GT(page->margins().top, 80 * dot);

  folder.write("text", "text");
  const auto failure = wait(printer.print(folder.file("text"), DocumentKind::image, "none", nullptr));
  EXPECT_TRUE(failure && failure->contains("damaged"));
}

async::Task<void> endWhenBegun(std::optional<GtkDocumentPrinter>& printer, std::string path) {
  while (!std::filesystem::exists(path))
    (void)co_await async::sleep(1ms);
  printer.reset();
}

TEST_F(ChildDecoderTest, PrintsOnWithoutTheAskerAndStopsWithThePrinter) {
  if (!gtk_init_check())
    GTEST_SKIP() << "needs a display";
  folder.write("long.pdf", pdf(std::vector<Page>(20, {600, 800})));
  const auto path = folder.file("long.pdf");
  std::optional<GtkDocumentPrinter> printer(std::in_place, decoder, folder.file("out.pdf"));
  std::optional<std::optional<std::string>> unseen;
  {
    async::Scope window;
    window.spawn(support::keepResult(printer->print(path, DocumentKind::pdf, "long", nullptr), &unseen));
  }
  EXPECT_TRUE(support::runUntil([&] { return folder.content("out.pdf").contains("%%EOF"); }));

  // One that waited for its page would never let the toolkit's own loop end.
  printer.emplace(decoder, folder.file("cut.pdf"));
  scope.spawn(endWhenBegun(printer, folder.file("cut.pdf")));
  EXPECT_EQ(wait(printer->print(path, DocumentKind::pdf, "cut", nullptr)), std::nullopt);
  EXPECT_FALSE(printer);
}

} // namespace
} // namespace ondrel::platform::decoding
