#include "base/Text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace ondrel::base {

namespace {

struct Decoded {
  char32_t character = 0xFFFD;
  std::size_t length = 1;
  bool valid = false;
};

Decoded decodeAt(std::string_view text, std::size_t at) {
  const auto first = static_cast<std::uint8_t>(text[at]);
  if (first < 0x80)
    return {first, 1, true};
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC2 || first > 0xF4 || at + length > text.size())
    return {};
  char32_t character = first & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    const auto next = static_cast<std::uint8_t>(text[at + i]);
    if ((next & 0xC0) != 0x80)
      return {};
    character = (character << 6) | (next & 0x3F);
  }
  constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (character < smallest[length] || character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF))
    return {};
  return {character, length, true};
}

bool isControl(char32_t c) {
  return c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029;
}

bool isInvisible(char32_t c) {
  return (c >= 0x200B && c <= 0x200F) || (c >= 0x202A && c <= 0x202E) || (c >= 0x2060 && c <= 0x206F) ||
         c == 0x061C || c == 0xFEFF || c == 0x00AD || (c >= 0xE0000 && c <= 0xE007F);
}

bool isSpace(char32_t c) {
  return (c >= 0x09 && c <= 0x0D) || c == ' ' || c == 0x85 || c == 0xA0 || c == 0x1680 ||
         (c >= 0x2000 && c <= 0x200A) || c == 0x2028 || c == 0x2029 || c == 0x202F || c == 0x205F ||
         c == 0x3000;
}

constexpr std::string_view replacementCharacter = "\xEF\xBF\xBD";
// File systems take 255 bytes; a file that is being written has a suffix of the engine's or of ours.
constexpr std::size_t longestFileName = 240;

} // namespace

bool isValidUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const auto decoded = decodeAt(text, i);
    if (!decoded.valid)
      return false;
    i += decoded.length;
  }
  return true;
}

std::string lowercasedAscii(std::string_view text) {
  std::string result(text);
  std::ranges::transform(result, result.begin(),
                         [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
  return result;
}

std::string_view trimmed(std::string_view text) {
  std::size_t first = text.size();
  std::size_t end = 0;
  for (std::size_t i = 0; i < text.size();) {
    const auto decoded = decodeAt(text, i);
    if (!decoded.valid || !isSpace(decoded.character)) {
      first = std::min(first, i);
      end = i + decoded.length;
    }
    i += decoded.length;
  }
  return end == 0 ? std::string_view() : text.substr(first, end - first);
}

std::optional<long long> parsedInteger(std::string_view text) {
  if (text.starts_with('+') && !text.substr(1).starts_with('-'))
    text.remove_prefix(1);
  long long value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size())
    return std::nullopt;
  return value;
}

std::string displayLine(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size();) {
    const auto decoded = decodeAt(text, i);
    if (!decoded.valid)
      result += replacementCharacter;
    else if (isControl(decoded.character))
      result += ' ';
    else if (!isInvisible(decoded.character))
      result += text.substr(i, decoded.length);
    i += decoded.length;
  }
  return result;
}

std::string shortDisplayLine(std::string_view text) {
  constexpr std::size_t longest = 1000;
  const auto cut = cutAtCharacter(text, longest);
  return displayLine(cut) + (cut.size() < text.size() ? "…" : "");
}

std::string_view cutAtCharacter(std::string_view text, std::size_t limit) {
  if (text.size() <= limit)
    return text;
  constexpr std::size_t longestCharacter = 4;
  auto end = limit;
  while (end > 0 && limit - end < longestCharacter && (static_cast<std::uint8_t>(text[end]) & 0xC0) == 0x80)
    --end;
  return text.substr(0, end);
}

std::string escapedMarkup(std::string_view text) {
  std::string result;
  result.reserve(text.size() + text.size() / 16);
  for (const char c : text) {
    switch (c) {
    case '&':
      result += "&amp;";
      break;
    case '<':
      result += "&lt;";
      break;
    case '>':
      result += "&gt;";
      break;
    case '"':
      result += "&quot;";
      break;
    default:
      result += c;
    }
  }
  return result;
}

std::string safeFileName(std::string_view name, std::string_view fallback) {
  auto clean = displayLine(name);
  std::ranges::replace(clean, '/', '-');
  std::ranges::replace(clean, '\\', '-');
  auto rest = trimmed(clean);
  while (rest.starts_with('.') || rest.starts_with(' '))
    rest.remove_prefix(1);
  if (rest.empty())
    return std::string(fallback);
  if (rest.size() <= longestFileName)
    return std::string(rest);
  const auto dot = rest.rfind('.');
  const auto extension = dot != rest.npos && rest.size() - dot <= 32 ? rest.substr(dot) : std::string_view();
  return std::string(cutAtCharacter(rest, longestFileName - extension.size())) += extension;
}

} // namespace ondrel::base
