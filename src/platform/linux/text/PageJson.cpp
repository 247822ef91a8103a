#include "platform/linux/text/PageJson.h"

#include <boost/json/parse.hpp>

#include <charconv>
#include <string>

namespace ondrel::platform::text {

namespace {

constexpr std::size_t escapeLength = 6; // \uXXXX

// The code unit of the \uXXXX escape at this place; 0 when there is none.
unsigned codeUnitAt(std::string_view text, std::size_t at) {
  if (text.size() < at + escapeLength || text[at] != '\\' || text[at + 1] != 'u')
    return 0;
  unsigned unit = 0;
  const auto* end = text.data() + at + escapeLength;
  const auto result = std::from_chars(text.data() + at + 2, end, unit, 16);
  return result.ec == std::errc() && result.ptr == end ? unit : 0;
}

bool isLeading(unsigned unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
bool isTrailing(unsigned unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

// Lone surrogates are always written as escapes: the encoder has no UTF-8 for them.
std::string withoutLoneSurrogates(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size();) {
    std::size_t length = 1;
    if (text[i] == '\\') {
      const auto unit = codeUnitAt(text, i);
      length = unit ? escapeLength : 2;
      if (isLeading(unit) && isTrailing(codeUnitAt(text, i + escapeLength))) {
        length = 2 * escapeLength;
      } else if (isLeading(unit) || isTrailing(unit)) {
        result += "\\uFFFD";
        i += escapeLength;
        continue;
      }
    }
    result += text.substr(i, length);
    i += length;
  }
  return result;
}

} // namespace

std::optional<boost::json::value> parsePageJson(std::string_view text) {
  boost::json::parse_options options;
  options.max_depth = deepestPageJson;
  boost::json::error_code error;
  auto value = boost::json::parse(withoutLoneSurrogates(text), error, {}, options);
  if (error)
    return std::nullopt;
  return value;
}

} // namespace ondrel::platform::text
