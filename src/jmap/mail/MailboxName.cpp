#include "jmap/mail/MailboxName.h"

#include <unicode/normlzr.h>
#include <unicode/unistr.h>

namespace ondrel::jmap {

bool sameMailboxName(const std::string& a, const std::string& b) {
  if (a == b)
    return true;
  // Bytes that are no text all become the same mark: such names are the same only when their bytes are.
  const auto first = icu::UnicodeString::fromUTF8(a);
  const auto second = icu::UnicodeString::fromUTF8(b);
  constexpr char16_t replacement = 0xFFFD;
  if (first.indexOf(replacement) >= 0 || second.indexOf(replacement) >= 0)
    return false;
  UErrorCode failure = U_ZERO_ERROR;
  const auto order = icu::Normalizer::compare(first, second, U_COMPARE_IGNORE_CASE, failure);
  return U_SUCCESS(failure) && order == 0;
}

} // namespace ondrel::jmap
