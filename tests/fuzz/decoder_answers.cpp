#include "platform/linux/decoding/DecoderAnswers.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

// What a decoder that was taken over may send: the header and what follows it.

namespace {

using namespace ondrel::platform;
using namespace ondrel::platform::decoding;

void check(bool holds) {
  if (!holds)
    std::abort();
}

bool isPart(float value) {
  return value >= 0 && value <= 1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Request request;
  AnswerHeader header;
  if (size < sizeof request + sizeof header)
    return 0;
  std::memcpy(&request, data, sizeof request);
  std::memcpy(&header, data + sizeof request, sizeof header);
  const std::span rest(data + sizeof request + sizeof header, size - sizeof request - sizeof header);
  // The program asks for nothing else.
  request.width = request.width % 4096 + 4096;
  request.height = request.height % 2048 + 2048;
  const auto length = answerLength(request, header);
  check(!length || *length <= std::size_t{8192} * 4096 * 4);

  for (const auto kind : {DocumentKind::image, DocumentKind::pdf})
    if (const auto told = outline(kind, rest)) {
      check(!told->pages.empty() && told->pages.size() <= mostPages);
      for (const auto& page : told->pages)
        check(page.width > 0 && page.height > 0 && page.width <= 1e6 && page.height <= 1e6 &&
              page.delay > ondrel::async::Duration::zero());
    }
  if (const auto text = pageText(rest)) {
    check(text->characters.size() == text->boxes.size());
    for (const auto& box : text->boxes)
      check(isPart(box.left) && isPart(box.top) && isPart(box.right) && isPart(box.bottom));
    for (const auto character : text->characters)
      check(character != 0 && character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF));
  }
  return 0;
}
