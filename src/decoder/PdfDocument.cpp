#include "decoder/Pixels.h"

#include "platform/linux/glib/Ref.h"

#include <poppler.h>

#include <algorithm>
#include <chrono>
#include <memory>

namespace ondrel::decoder {

namespace {

using glib::Ref;

// Of the sizes of pages. Those after it are taken to be as the last one that was measured.
constexpr std::chrono::seconds measuringTime{2};
// What a page that can't be read is taken for.
constexpr PageDescription letter{612, 792, 0};

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using Painter = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;

class PdfDocument final : public Document {
 public:
  explicit PdfDocument(Ref<PopplerDocument> document) : document_(std::move(document)) {
    const int count = std::min(poppler_document_get_n_pages(document_.get()),
                               static_cast<int>(platform::decoding::mostPages));
    const auto end = std::chrono::steady_clock::now() + measuringTime;
    for (int i = 0; i < count; ++i)
      pages_.push_back(i == 0 || std::chrono::steady_clock::now() < end ? measured(i) : pages_.back());
  }

  bool isAnimation() const override { return false; }
  const std::vector<PageDescription>& pages() const override { return pages_; }

  Result<Pixels> render(int page, int width, int height) override {
    const auto source = this->page(page);
    if (!source)
      return std::unexpected(Status::damaged);
    const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height),
                          cairo_surface_destroy);
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
      return std::unexpected(Status::tooLarge);
    const Painter painter(cairo_create(surface.get()), cairo_destroy);
    cairo_set_source_rgb(painter.get(), 1, 1, 1);
    cairo_paint(painter.get());
    const auto& size = pages_[static_cast<std::size_t>(page)];
    cairo_scale(painter.get(), width / static_cast<double>(size.width),
                height / static_cast<double>(size.height));
    poppler_page_render(source.get(), painter.get());
    return pixelsOf(surface.get());
  }

  std::vector<PlacedCharacter> text(int page) override {
    const auto source = this->page(page);
    const glib::CString text(source ? poppler_page_get_text(source.get()) : nullptr);
    PopplerRectangle* rectangles = nullptr;
    guint count = 0;
    if (!text || !poppler_page_get_text_layout(source.get(), &rectangles, &count))
      return {};
    const auto& size = pages_[static_cast<std::size_t>(page)];
    std::vector<PlacedCharacter> result;
    const char* at = text.get();
    for (guint i = 0; i < std::min(count, platform::decoding::mostCharacters) && *at;
         ++i, at = g_utf8_next_char(at)) {
      const auto& box = rectangles[i];
      result.push_back({g_utf8_get_char(at), static_cast<float>(std::min(box.x1, box.x2)) / size.width,
                        static_cast<float>(std::min(box.y1, box.y2)) / size.height,
                        static_cast<float>(std::max(box.x1, box.x2)) / size.width,
                        static_cast<float>(std::max(box.y1, box.y2)) / size.height});
    }
    g_free(rectangles);
    return result;
  }

 private:
  Ref<PopplerPage> page(int index) const {
    return glib::adopt(poppler_document_get_page(document_.get(), index));
  }
  PageDescription measured(int index) const {
    double width = 0;
    double height = 0;
    if (const auto source = page(index))
      poppler_page_get_size(source.get(), &width, &height);
    if (!(width > 0 && height > 0))
      return letter;
    return {static_cast<float>(width), static_cast<float>(height), 0};
  }

  Ref<PopplerDocument> document_;
  std::vector<PageDescription> pages_;
};

} // namespace

Result<std::unique_ptr<Document>> openPdf(GBytes* file) {
  auto document = glib::adopt(poppler_document_new_from_bytes(file, nullptr, nullptr));
  if (!document || poppler_document_get_n_pages(document.get()) < 1)
    return std::unexpected(Status::damaged);
  return std::make_unique<PdfDocument>(std::move(document));
}

} // namespace ondrel::decoder
