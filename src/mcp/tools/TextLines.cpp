#include "mcp/tools/TextLines.h"

#include <algorithm>
#include <utility>

namespace ondrel::mcp::tools {

namespace {

constexpr std::string_view blanks = " \t\r\n\f";
constexpr std::string_view noBreakSpace = "\u00A0";

} // namespace

void TextLines::startLine() {
  mark_.clear();
  due_ = std::max<std::size_t>(due_, 1);
}

void TextLines::startParagraph() {
  due_ = 2;
}

void TextLines::breakLine() {
  due_ = std::min<std::size_t>(due_ + 1, 2);
}

void TextLines::startCell() {
  cellIsDue_ = true;
}

void TextLines::leaveQuote() {
  startParagraph();
  quotes_ -= quotes_ > 0 ? 1 : 0;
}

std::string_view TextLines::since(std::size_t size) const {
  const auto text = std::string_view(text_).substr(std::min(size, text_.size()));
  return text.substr(std::min(text.find_first_not_of(blanks), text.size()));
}

void TextLines::beginNow() {
  const bool isNewLine = due_ > 0 || text_.empty();
  // Nothing stands above the first line.
  if (!text_.empty())
    text_.append(due_, '\n');
  due_ = 0;
  if (isNewLine)
    for (std::size_t i = 0; i < std::min(quotes_, deepestQuote); ++i)
      text_ += "> ";
  else if (cellIsDue_)
    text_ += " | ";
  else if (spaceIsDue_)
    text_ += ' ';
  text_ += std::exchange(mark_, {});
  cellIsDue_ = false;
  spaceIsDue_ = false;
}

void TextLines::write(std::string_view word) {
  beginNow();
  text_ += word;
}

void TextLines::addPreformatted(std::string_view text) {
  while (true) {
    const auto end = text.find('\n');
    if (const auto line = text.substr(0, end); !line.empty() && line != "\r")
      write(line);
    if (end == text.npos)
      return;
    breakLine();
    text.remove_prefix(end + 1);
  }
}

void TextLines::add(std::string_view text) {
  if (preformatted_ > 0) {
    addPreformatted(text);
    return;
  }
  while (!text.empty()) {
    const auto isBlank = [&] { return blanks.contains(text.front()) || text.starts_with(noBreakSpace); };
    if (isBlank()) {
      spaceIsDue_ = true;
      text.remove_prefix(blanks.contains(text.front()) ? 1 : noBreakSpace.size());
      continue;
    }
    const auto end = std::min(text.find_first_of(blanks), text.find(noBreakSpace));
    write(text.substr(0, end));
    text.remove_prefix(std::min(end, text.size()));
  }
}

} // namespace ondrel::mcp::tools
