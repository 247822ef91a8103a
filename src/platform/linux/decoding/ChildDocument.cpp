#include "platform/linux/decoding/ChildDocument.h"

#include <cstdint>
#include <utility>

namespace ondrel::platform::decoding {

namespace {

using Kind = DecodeError::Kind;

std::unexpected<DecodeError> closed() {
  return std::unexpected(DecodeError{Kind::unavailable, "the document is closed"});
}
std::unexpected<DecodeError> broken(const char* description) {
  return std::unexpected(DecodeError{Kind::crashed, description});
}

bool canBeDrawn(int width, int height) {
  return width > 0 && height > 0 &&
         static_cast<std::int64_t>(width) * height <= std::int64_t{DecodedDocument::mostPixels};
}

// Free functions: the document may go while they wait.
async::Task<DecodeResult<PicturePointer>> receivePicture(async::Future<Answer> pending, int width,
                                                         int height) {
  auto answer = co_await std::move(pending);
  if (!answer)
    co_return closed();
  if (!*answer)
    co_return std::unexpected((*answer).error());
  co_return std::make_shared<const Picture>(Picture{width, height, std::move(**answer)});
}

async::Task<DecodeResult<PicturePointer>> refuse() {
  co_return std::unexpected(DecodeError{Kind::tooLarge, "more pixels than a picture may have"});
}

async::Task<DecodeResult<PageText>> receiveText(async::Future<Answer> pending) {
  const auto answer = co_await std::move(pending);
  if (!answer)
    co_return closed();
  if (!*answer)
    co_return std::unexpected((*answer).error());
  auto text = pageText(**answer);
  if (!text)
    co_return broken("the decoder's text is none");
  co_return std::move(*text);
}

} // namespace

ChildDocument::ChildDocument(std::unique_ptr<DecoderProcess> process, DocumentOutline outline)
    : process_(std::move(process)), outline_(std::move(outline)) {
}

async::Task<DecodeResult<std::unique_ptr<DecodedDocument>>>
ChildDocument::open(DecoderProcess::Options options, DocumentKind kind, files::UniqueFd file) {
  auto process = DecoderProcess::start(options, kind, std::move(file));
  if (!process)
    co_return std::unexpected(process.error());
  const auto answer = co_await (*process)->ask({.action = Action::describe});
  if (!answer)
    co_return closed();
  if (!*answer)
    co_return std::unexpected((*answer).error());
  auto told = outline(kind, **answer);
  if (!told)
    co_return broken("the decoder's description is none");
  co_return std::make_unique<ChildDocument>(std::move(*process), std::move(*told));
}

async::Task<DecodeResult<PicturePointer>> ChildDocument::render(int page, int width, int height) {
  at(page); // out of range is a fault of the program's
  if (!canBeDrawn(width, height))
    return refuse();
  return receivePicture(
      process_->ask({.action = Action::render, .page = page, .width = width, .height = height}), width,
      height);
}

async::Task<DecodeResult<PageText>> ChildDocument::text(int page) {
  at(page);
  return receiveText(process_->ask({.action = Action::text, .page = page}));
}

} // namespace ondrel::platform::decoding
