#pragma once

#include "platform/linux/decoding/DecoderMessages.h"

#include <glib.h>

#include <cstdint>
#include <expected>
#include <memory>
#include <vector>

namespace ondrel::decoder {

using platform::decoding::PageDescription;
using platform::decoding::PlacedCharacter;
using platform::decoding::Status;

template <class T>
using Result = std::expected<T, Status>;

// RGBA as in platform::Picture.
using Pixels = std::vector<std::uint8_t>;

// The file that this process is there for, opened.
class Document {
 public:
  virtual ~Document() = default;
  virtual bool isAnimation() const = 0;
  virtual const std::vector<PageDescription>& pages() const = 0; // at least one
  // `page` is one of them.
  virtual Result<Pixels> render(int page, int width, int height) = 0;
  virtual std::vector<PlacedCharacter> text(int page) = 0;
};

Result<std::unique_ptr<Document>> openImage(GBytes* file);
Result<std::unique_ptr<Document>> openPdf(GBytes* file);

// Loads the code for all kinds of images and what tells them apart; no more can be loaded once the process is
// shut off.
void loadImageModules();

} // namespace ondrel::decoder
