#include "highlights/file/JsonScanner.h"

#include <algorithm>

namespace ondrel::highlights {

bool JsonScanner::isAtEnd() {
  skipWhiteSpace();
  return position_ == text_.size();
}

bool JsonScanner::take(char c) {
  if (isAtEnd() || text_[position_] != c)
    return false;
  ++position_;
  return true;
}

std::optional<std::string_view> JsonScanner::takeString() {
  if (isAtEnd() || text_[position_] != '"')
    return std::nullopt;
  const auto start = position_;
  if (!skipString(text_.size())) {
    position_ = start;
    return std::nullopt;
  }
  return text_.substr(start, ++position_ - start);
}

std::optional<std::string_view> JsonScanner::takeElement(std::size_t longest) {
  skipWhiteSpace();
  const auto start = position_;
  const auto end = start + std::min(longest, text_.size() - start);
  std::size_t depth = 0;
  for (; position_ < end; ++position_) {
    const char c = text_[position_];
    const bool isClosing = c == ']' || c == '}';
    if (depth == 0 && (c == ',' || isClosing))
      return text_.substr(start, position_ - start);
    if (c == '[' || c == '{')
      ++depth;
    else if (isClosing)
      --depth;
    else if (c == '"' && !skipString(end))
      break;
  }
  position_ = start;
  return std::nullopt;
}

void JsonScanner::skipWhiteSpace() {
  position_ = std::min(text_.find_first_not_of(" \t\r\n", position_), text_.size());
}

// From its first quote to its last one.
bool JsonScanner::skipString(std::size_t end) {
  for (++position_; position_ < end; ++position_) {
    if (text_[position_] == '"')
      return true;
    if (text_[position_] == '\\')
      ++position_;
  }
  return false;
}

} // namespace ondrel::highlights
