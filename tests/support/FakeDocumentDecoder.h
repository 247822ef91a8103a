#pragma once

#include "async/sleep.h"
#include "platform/documents/DocumentDecoder.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::support {

// What the test keeps of a document, which ends with its window.
struct FakePages {
  platform::DocumentKind kind = platform::DocumentKind::pdf;
  int count = 1;
  double width = 600;
  double height = 800;
  bool isAnimation = false;
  async::Duration opening{}; // decoders answer late
  async::Duration rendering{};
  std::string words{};                          // on each page, side by side on one line
  std::optional<platform::DecodeError> error{}; // instead of opening

  std::vector<std::string> opened{};
  std::vector<int> rendered{};
  int open = 0;
};

class FakeDocument final : public platform::DecodedDocument {
 public:
  explicit FakeDocument(FakePages& pages) : pages_(pages) { ++pages_.open; }
  ~FakeDocument() override { --pages_.open; }

  int pageCount() const override { return pages_.count; }
  bool isAnimation() const override { return pages_.isAnimation; }
  async::Duration frameDelay(int) const override { return std::chrono::milliseconds(100); }
  double pageWidth(int) const override { return pages_.width; }
  double pageHeight(int) const override { return pages_.height; }
  async::Task<platform::DecodeResult<platform::PicturePointer>> render(int page, int width,
                                                                       int height) override {
    pages_.rendered.push_back(page);
    return draw(pages_.rendering, width, height);
  }
  async::Task<platform::DecodeResult<platform::PageText>> text(int) override {
    platform::PageText result;
    for (std::size_t i = 0; i < pages_.words.size(); ++i) {
      const auto part = 1.0F / static_cast<float>(pages_.words.size());
      const auto left = static_cast<float>(i) * part;
      result.characters += static_cast<char32_t>(pages_.words[i]);
      result.boxes.push_back({left, 0, left + part, 0.1F});
    }
    co_await async::nextTurn();
    co_return result;
  }

 private:
  static async::Task<platform::DecodeResult<platform::PicturePointer>> draw(async::Duration takes, int width,
                                                                            int height) {
    if (!co_await async::sleep(takes))
      co_return std::unexpected(platform::DecodeError{});
    platform::Picture picture{width, height, {}};
    picture.pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4, 128);
    co_return std::make_shared<const platform::Picture>(std::move(picture));
  }

  FakePages& pages_;
};

// Opens every file as the pages that the test has set.
class FakeDocumentDecoder final : public platform::DocumentDecoder {
 public:
  async::Task<platform::DecodeResult<platform::PicturePointer>> thumbnail(std::string, platform::DocumentKind,
                                                                          int side) override {
    return FakeDocument(pages).render(0, side, side);
  }
  async::Task<platform::DecodeResult<std::unique_ptr<platform::DecodedDocument>>>
  open(std::string path, platform::DocumentKind) override {
    pages.opened.push_back(std::move(path));
    (void)co_await async::sleep(pages.opening);
    if (pages.error)
      co_return std::unexpected(*pages.error);
    co_return std::make_unique<FakeDocument>(pages);
  }

  FakePages pages;
};

} // namespace ondrel::support
