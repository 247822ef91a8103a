#pragma once

#include "async/EventLoop.h"
#include "async/Task.h"
#include "platform/documents/Picture.h"

#include <expected>
#include <memory>
#include <string>
#include <vector>

namespace ondrel::platform {

enum class DocumentKind { image, pdf };

struct DecodeError {
  enum class Kind { damaged, tooLarge, timedOut, crashed, unavailable };
  Kind kind = Kind::damaged;
  std::string description; // for the log
};

template <class T>
using DecodeResult = std::expected<T, DecodeError>;
using PicturePointer = std::shared_ptr<const Picture>;

// What is written on a page, in reading order.
struct PageText {
  // As a part of the page: 0 to 1 from its left and its top.
  struct Box {
    float left = 0;
    float top = 0;
    float right = 0;
    float bottom = 0;
  };
  std::u32string characters;
  std::vector<Box> boxes; // one for each character
};

// A file that has been opened, in a process of its own that ends with it. Main thread only. Requests are
// answered one after the other; one whose task goes before its turn comes is left out. Tasks may outlive the
// document: they end with an error.
class DecodedDocument {
 public:
  virtual ~DecodedDocument() = default;
  virtual int pageCount() const = 0; // at least 1; of an animated image its frames
  virtual bool isAnimation() const = 0;
  virtual async::Duration frameDelay(int page) const = 0; // of an animation
  virtual double pageWidth(int page) const = 0; // points of a PDF, pixels of an image (turned as exif says)
  virtual double pageHeight(int page) const = 0;
  // The page in that many pixels; at most `mostPixels`.
  virtual async::Task<DecodeResult<PicturePointer>> render(int page, int width, int height) = 0;
  // Of a PDF; empty for images.
  virtual async::Task<DecodeResult<PageText>> text(int page) = 0;

  static constexpr int mostPixels = 1 << 24; // 64 MiB
};

// Reads images and PDF files of strangers in a child process: what breaks a decoder doesn't reach the
// program.
class DocumentDecoder {
 public:
  virtual ~DocumentDecoder() = default;
  // Fits into a square of `side` pixels; images are turned as their exif data say, a PDF shows its first
  // page.
  virtual async::Task<DecodeResult<PicturePointer>> thumbnail(std::string data, DocumentKind kind,
                                                              int side) = 0;
  virtual async::Task<DecodeResult<std::unique_ptr<DecodedDocument>>> open(std::string path,
                                                                           DocumentKind kind) = 0;
};

} // namespace ondrel::platform
