#include "attachments/SearchKey.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <cstdint>
#include <unordered_map>

namespace ondrel::attachments {

namespace {

// Marks of a lower class belong to the letter: the dot of an Indic one, the voicing of Japanese kana.
constexpr int firstAccentClass = 10;

bool isAccent(UChar32 character) {
  return u_charType(character) == U_NON_SPACING_MARK && u_getCombiningClass(character) >= firstAccentClass;
}

std::string keyOf(UChar32 character) {
  UErrorCode failure = U_ZERO_ERROR;
  const auto* folding = icu::Normalizer2::getNFKCCasefoldInstance(failure);
  const auto* decomposing = icu::Normalizer2::getNFDInstance(failure);
  const icu::UnicodeString text(character);
  const auto parts = decomposing->normalize(folding->normalize(text, failure), failure);
  icu::UnicodeString key;
  for (int32_t at = 0; at < parts.length(); at = parts.moveIndex32(at, 1))
    if (!isAccent(parts.char32At(at)))
      key.append(parts.char32At(at));
  std::string result;
  (U_SUCCESS(failure) ? key : text).toUTF8String(result);
  return result;
}

// Most texts have few characters in all.
const std::string& keptKeyOf(UChar32 character) {
  static std::unordered_map<UChar32, std::string> keys;
  const auto found = keys.find(character);
  return found != keys.end() ? found->second : keys.emplace(character, keyOf(character)).first->second;
}

} // namespace

std::string searchKey(std::string_view text) {
  std::string key;
  appendSearchKey(key, text);
  return key;
}

void appendSearchKey(std::string& key, std::string_view text) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  for (std::size_t at = 0; at < text.size();) {
    if (const auto byte = bytes[at]; byte < 0x80) {
      key += static_cast<char>(byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte);
      ++at;
      continue;
    }
    UChar32 character = 0;
    U8_NEXT_OR_FFFD(bytes, at, text.size(), character);
    key += keptKeyOf(character);
  }
}

std::size_t findFrom(std::string_view searched, std::string_view text, std::size_t from) {
  if (text.empty() || searched.size() < text.size())
    return text.empty() ? from : searched.npos;
  const auto end = searched.size() - text.size() + 1;
  // A loop that the compiler turns into a few instructions for the whole block.
  constexpr std::size_t block = 64;
  const char first = text.front();
  const char last = text.back();
  for (; from + block <= end; from += block) {
    const char* begins = searched.data() + from;
    const char* ends = begins + text.size() - 1;
    unsigned char isCandidate = 0;
    for (std::size_t i = 0; i < block; ++i)
      isCandidate |= static_cast<unsigned char>((begins[i] == first) & (ends[i] == last));
    for (std::size_t i = 0; isCandidate && i < block; ++i)
      if (begins[i] == first && ends[i] == last && searched.substr(from + i, text.size()) == text)
        return from + i;
  }
  return from < end ? searched.find(text, from) : searched.npos;
}

} // namespace ondrel::attachments
