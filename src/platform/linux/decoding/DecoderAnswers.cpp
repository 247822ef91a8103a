#include "platform/linux/decoding/DecoderAnswers.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>

namespace ondrel::platform::decoding {

namespace {

using std::chrono::milliseconds;

// Points or pixels: what follows from them by multiplication stays a small number.
constexpr double longestSide = 1e6;
// Frames without a time, or with next to none, have a tenth of a second, as browsers do it.
constexpr milliseconds shortestDelay{20};
constexpr milliseconds usualDelay{100};
constexpr milliseconds longestDelay{60'000};

// Copies, since the bytes are aligned for nothing.
template <class T>
T at(std::span<const std::uint8_t> bytes, std::size_t offset) {
  T value;
  std::memcpy(&value, bytes.data() + offset, sizeof value);
  return value;
}

bool isSide(double length) {
  return length > 0 && length <= longestSide; // and no NaN
}

async::Duration delay(std::uint32_t told) {
  const milliseconds time(told);
  return time < shortestDelay ? usualDelay : std::min(time, longestDelay);
}

bool isCharacter(std::uint32_t value) {
  return value != 0 && value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

float part(float value) {
  return std::isfinite(value) ? std::clamp(value, 0.0F, 1.0F) : 0.0F;
}

bool isAgreedLength(const Request& request, std::uint64_t length) {
  switch (request.action) {
  case Action::describe:
    return length <= sizeof(Description) + mostPages * sizeof(PageDescription);
  case Action::render:
    return length ==
           static_cast<std::uint64_t>(request.width) * static_cast<std::uint64_t>(request.height) * 4;
  case Action::text:
    return length <= mostCharacters * sizeof(PlacedCharacter);
  }
  return false;
}

} // namespace

DecodeResult<std::size_t> answerLength(const Request& request, const AnswerHeader& header) {
  using Kind = DecodeError::Kind;
  if (header.action == request.action && header.status == Status::done &&
      isAgreedLength(request, header.length))
    return static_cast<std::size_t>(header.length);
  if (header.action == request.action && header.length == 0 && header.status == Status::damaged)
    return std::unexpected(DecodeError{Kind::damaged, "the file is damaged"});
  if (header.action == request.action && header.length == 0 && header.status == Status::tooLarge)
    return std::unexpected(DecodeError{Kind::tooLarge, "the file is too large to decode"});
  return std::unexpected(
      DecodeError{Kind::crashed, fmt::format("the decoder's answer is none: status {}, action {}, length {}",
                                             static_cast<std::uint32_t>(header.status),
                                             static_cast<std::uint32_t>(header.action), header.length)});
}

std::optional<DocumentOutline> outline(DocumentKind kind, std::span<const std::uint8_t> answer) {
  if (answer.size() < sizeof(Description))
    return std::nullopt;
  const auto told = at<Description>(answer, 0);
  answer = answer.subspan(sizeof(Description));
  if (told.pageCount == 0 || told.pageCount > mostPages || told.isAnimation > 1 ||
      answer.size() != told.pageCount * sizeof(PageDescription) ||
      (kind == DocumentKind::pdf && told.isAnimation))
    return std::nullopt;
  DocumentOutline result{.isAnimation = told.isAnimation == 1, .pages = {}};
  result.pages.reserve(told.pageCount);
  for (std::size_t i = 0; i < told.pageCount; ++i) {
    const auto page = at<PageDescription>(answer, i * sizeof(PageDescription));
    if (!isSide(page.width) || !isSide(page.height))
      return std::nullopt;
    result.pages.push_back({page.width, page.height, delay(page.delay)});
  }
  return result;
}

std::optional<PageText> pageText(std::span<const std::uint8_t> answer) {
  const auto count = answer.size() / sizeof(PlacedCharacter);
  if (count > mostCharacters || answer.size() != count * sizeof(PlacedCharacter))
    return std::nullopt;
  PageText result;
  result.characters.reserve(count);
  result.boxes.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    const auto placed = at<PlacedCharacter>(answer, i * sizeof(PlacedCharacter));
    result.characters += isCharacter(placed.character) ? static_cast<char32_t>(placed.character) : U'\uFFFD';
    result.boxes.push_back({part(placed.left), part(placed.top), part(placed.right), part(placed.bottom)});
  }
  return result;
}

} // namespace ondrel::platform::decoding
