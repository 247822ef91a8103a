#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>

// The texts that a user sees, in the user's language (GNU gettext; the catalogues are made from po/). The
// English text stands in the code and is its own key. Log lines, texts for developers and those in files stay
// English.
//
// A text must be a literal, whole sentences, for tools/translations to find it. Any thread.
namespace ondrel::base {

// Where the catalogues lie: <folder>/<language>/LC_MESSAGES/ondrel.mo. Until then all is English. Call it
// after setlocale(), before the first text.
void useTranslations(const std::string& folder);

// Lives as long as the program; `text` itself where there is no translation.
[[nodiscard]] const char* tr(const char* text);

// For a text that is ambiguous without `context`, which is English and not shown: "verb", say.
[[nodiscard]] const char* trIn(const char* context, const char* text);

// Marks a text of a table, which is translated by tr() where it is shown.
consteval const char* trMark(const char* text) {
  return text;
}

namespace detail {

// Falls back on `original` if the translation has other places than that.
std::string formatted(const char* translation, fmt::string_view original, fmt::format_args arguments);
const char* plural(const char* one, const char* many, unsigned long count);

} // namespace detail

// With places as fmt::format has them. Number them when there is more than one, "{0} of {1}": languages
// differ in order.
template <class... Arguments>
[[nodiscard]] std::string trFormat(fmt::format_string<Arguments...> text, Arguments&&... arguments) {
  const fmt::string_view original = text;
  return detail::formatted(tr(original.data()), original, fmt::make_format_args(arguments...));
}

// The form for `count`, which is not one of the arguments by itself: trPlural("{} tab", "{} tabs", n, n).
template <class... Arguments>
[[nodiscard]] std::string trPlural(fmt::format_string<Arguments...> one,
                                   fmt::format_string<Arguments...> many, unsigned long count,
                                   Arguments&&... arguments) {
  const fmt::string_view singular = one;
  const fmt::string_view several = many;
  return detail::formatted(detail::plural(singular.data(), several.data(), count),
                           count == 1 ? singular : several, fmt::make_format_args(arguments...));
}

} // namespace ondrel::base
