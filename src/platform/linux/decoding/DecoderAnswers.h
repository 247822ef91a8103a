#pragma once

#include "platform/documents/DocumentDecoder.h"
#include "platform/linux/decoding/DecoderMessages.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <vector>

// The checks on what a decoder says. None trusts any of its bytes; what isn't as agreed gives nothing.
namespace ondrel::platform::decoding {

struct DocumentPage {
  double width = 0;
  double height = 0;
  async::Duration delay{};
};
struct DocumentOutline {
  bool isAnimation = false;
  std::vector<DocumentPage> pages; // at least one
};

// How many bytes follow the header of an answer to that request.
DecodeResult<std::size_t> answerLength(const Request& request, const AnswerHeader& header);

std::optional<DocumentOutline> outline(DocumentKind kind, std::span<const std::uint8_t> answer);
std::optional<PageText> pageText(std::span<const std::uint8_t> answer);

} // namespace ondrel::platform::decoding
