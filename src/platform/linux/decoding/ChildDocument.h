#pragma once

#include "platform/linux/decoding/DecoderAnswers.h"
#include "platform/linux/decoding/DecoderProcess.h"

#include <memory>

namespace ondrel::platform::decoding {

// A document that ondrel-decoder holds open.
class ChildDocument final : public DecodedDocument {
 public:
  // Asks for the outline first.
  static async::Task<DecodeResult<std::unique_ptr<DecodedDocument>>>
  open(DecoderProcess::Options options, DocumentKind kind, files::UniqueFd file);

  ChildDocument(std::unique_ptr<DecoderProcess> process, DocumentOutline outline);

  int pageCount() const override { return static_cast<int>(outline_.pages.size()); }
  bool isAnimation() const override { return outline_.isAnimation; }
  async::Duration frameDelay(int page) const override { return at(page).delay; }
  double pageWidth(int page) const override { return at(page).width; }
  double pageHeight(int page) const override { return at(page).height; }
  async::Task<DecodeResult<PicturePointer>> render(int page, int width, int height) override;
  async::Task<DecodeResult<PageText>> text(int page) override;

 private:
  const DocumentPage& at(int page) const { return outline_.pages.at(static_cast<std::size_t>(page)); }

  const std::unique_ptr<DecoderProcess> process_;
  const DocumentOutline outline_;
};

} // namespace ondrel::platform::decoding
