#include "ui/preview/PreviewText.h"

#include "base/Text.h"

#include <unicode/ucsdet.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace ondrel::ui {

namespace {

constexpr std::size_t longestLine = 4000;
constexpr std::size_t detectedBytes = 64 * 1024;
constexpr const char* fallback = "windows-1252"; // holds what is called Latin 1

struct Mark {
  std::string_view bytes;
  const char* encoding;
};
// The longer ones first: one begins with another.
constexpr Mark marks[] = {{{"\xFF\xFE\0\0", 4}, "UTF-32LE"},
                          {{"\0\0\xFE\xFF", 4}, "UTF-32BE"},
                          {"\xEF\xBB\xBF", "UTF-8"},
                          {"\xFF\xFE", "UTF-16LE"},
                          {"\xFE\xFF", "UTF-16BE"}};

std::string converted(std::string_view bytes, const char* encoding) {
  const icu::UnicodeString text(bytes.data(), static_cast<std::int32_t>(bytes.size()), encoding);
  std::string result;
  text.toUTF8String(result);
  return result;
}

std::string likelyEncoding(std::string_view bytes) {
  struct Close {
    void operator()(UCharsetDetector* detector) const { ucsdet_close(detector); }
  };
  UErrorCode error = U_ZERO_ERROR;
  const std::unique_ptr<UCharsetDetector, Close> detector(ucsdet_open(&error));
  const auto beginning = bytes.substr(0, detectedBytes);
  ucsdet_setText(detector.get(), beginning.data(), static_cast<std::int32_t>(beginning.size()), &error);
  const auto* match = U_SUCCESS(error) ? ucsdet_detect(detector.get(), &error) : nullptr;
  const char* name = match ? ucsdet_getName(match, &error) : nullptr;
  return name && U_SUCCESS(error) ? name : fallback;
}

// Without the beginning of a character at its end.
std::string_view withoutHalfCharacter(std::string_view text) {
  for (std::size_t cut = 0; cut < std::min<std::size_t>(4, text.size()); ++cut)
    if (const auto whole = text.substr(0, text.size() - cut); base::isValidUtf8(whole))
      return whole;
  return text;
}

void breakLines(std::string& text) {
  std::string result;
  std::string_view rest = text;
  bool isBroken = false;
  while (!rest.empty()) {
    const auto end = std::min(rest.find('\n'), rest.size() - 1) + 1;
    auto line = rest.substr(0, end);
    rest.remove_prefix(end);
    while (line.size() > longestLine + 1) {
      const auto piece = base::cutAtCharacter(line, longestLine);
      (result += piece) += '\n';
      line.remove_prefix(piece.size());
      isBroken = true;
    }
    result += line;
  }
  if (isBroken)
    text = std::move(result);
}

std::optional<std::string> decoded(std::string_view bytes, bool isCut) {
  for (const auto& mark : marks)
    if (bytes.starts_with(mark.bytes))
      return converted(bytes.substr(mark.bytes.size()), mark.encoding);
  const auto whole = isCut ? withoutHalfCharacter(bytes) : bytes;
  const bool hasNul = bytes.contains('\0');
  if (base::isValidUtf8(whole) && !hasNul)
    return std::string(whole);
  auto encoding = likelyEncoding(bytes);
  // Other encodings have no such byte in texts.
  if (hasNul && !encoding.starts_with("UTF-16") && !encoding.starts_with("UTF-32"))
    return std::nullopt;
  return converted(bytes, encoding.c_str());
}

} // namespace

std::optional<std::string> previewText(std::string_view bytes, bool isCut) {
  auto text = decoded(bytes, isCut);
  if (!text)
    return std::nullopt;
  std::ranges::replace(*text, '\0', ' '); // which the toolkit takes for the end
  breakLines(*text);
  return text;
}

} // namespace ondrel::ui
