#include "mcp/tools/TextPage.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

namespace ondrel::mcp::tools {

namespace {

bool beginsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

std::size_t characterCount(std::string_view text) {
  return static_cast<std::size_t>(std::ranges::count_if(text, beginsCharacter));
}

// Where so many characters end.
std::size_t lengthOf(std::string_view text, std::size_t characters) {
  std::size_t i = 0;
  for (; i < text.size(); ++i)
    if (beginsCharacter(text[i]) && characters-- == 0)
      break;
  return i;
}

} // namespace

std::string textPage(std::string text, std::int64_t offset) {
  const auto first = static_cast<std::size_t>(std::max<std::int64_t>(offset, 0));
  std::string_view rest = text;
  rest.remove_prefix(lengthOf(rest, first));
  if (rest.empty() && first > 0)
    return fmt::format("(The text has {} characters: nothing follows.)", characterCount(text));
  const auto length = lengthOf(rest, longestTextPage);
  if (length == text.size())
    return text;
  std::string page(rest.substr(0, length));
  if (const auto left = characterCount(rest.substr(length)); left > 0)
    page += fmt::format(
        "\n\n({} more characters follow: call get_email again with the same id and \"offset\": {}.)", left,
        first + longestTextPage);
  return page;
}

} // namespace ondrel::mcp::tools
