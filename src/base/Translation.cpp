#include "base/Translation.h"

#include "base/Log.h"

#include <libintl.h>

namespace ondrel::base {

namespace {

constexpr const char* domain = "ondrel";

} // namespace

void useTranslations(const std::string& folder) {
  bindtextdomain(domain, folder.c_str());
  bind_textdomain_codeset(domain, "UTF-8");
}

const char* tr(const char* text) {
  // The empty text is the key of the catalogue's own header.
  return *text ? dgettext(domain, text) : text;
}

// gettext keeps both in one key, with this character between them.
const char* trIn(const char* context, const char* text) {
  const auto key = std::string(context) + '\004' + text;
  const char* const found = dgettext(domain, key.c_str());
  return found == key.c_str() ? text : found;
}

namespace detail {

std::string formatted(const char* translation, fmt::string_view original, fmt::format_args arguments) {
  try {
    return fmt::vformat(translation, arguments);
  } catch (const fmt::format_error& error) {
    Logger("system").error("The translation \"{}\" can't be filled in: {}", translation, error.what());
    return fmt::vformat(original, arguments);
  }
}

const char* plural(const char* one, const char* many, unsigned long count) {
  return dngettext(domain, one, many, count);
}

} // namespace detail

} // namespace ondrel::base
