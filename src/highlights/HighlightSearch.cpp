#include "base/Translation.h"
#include "highlights/HighlightDocument.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <utility>

namespace ondrel::highlights {

namespace {

icu::UnicodeString folded(const std::string& text) {
  return icu::UnicodeString::fromUTF8(text).foldCase();
}

std::vector<icu::UnicodeString> words(const icu::UnicodeString& text) {
  std::vector<icu::UnicodeString> result;
  bool isInWord = false;
  for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
    const auto character = text.char32At(i);
    const bool wasInWord = std::exchange(isInWord, !u_isUWhiteSpace(character));
    if (isInWord && !wasInWord)
      result.emplace_back();
    if (isInWord)
      result.back().append(character);
  }
  return result;
}

} // namespace

HighlightDocument HighlightDocument::matching(const std::string& search) const {
  auto result = *this;
  const auto wanted = words(folded(search));
  if (wanted.empty() || entries.empty())
    return result;
  std::erase_if(result.entries, [&](const Entry& entry) {
    const auto text = folded(entry.prefix + entry.exact + entry.suffix + "\n" + entry.subject);
    return !std::ranges::all_of(wanted, [&](const auto& word) { return text.indexOf(word) >= 0; });
  });
  result.whenEmpty = base::tr("No highlights match the search.");
  return result;
}

} // namespace ondrel::highlights
