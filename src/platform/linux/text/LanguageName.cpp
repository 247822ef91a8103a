#include "platform/linux/text/LanguageName.h"

#include <unicode/locid.h>
#include <unicode/unistr.h>

namespace ondrel::platform::text {

std::string languageName(const std::string& tag) {
  icu::UnicodeString name;
  icu::Locale::createCanonical(tag.c_str()).getDisplayName(name);
  std::string result;
  name.toUTF8String(result);
  return result.empty() ? tag : result;
}

} // namespace ondrel::platform::text
