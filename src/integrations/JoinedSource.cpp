#include "integrations/JoinedSource.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace ondrel::integrations {

namespace {

// Some editors begin a file with it. In the middle of a style sheet it would be a part of a selector.
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

// Where the next line begins; npos when there is none.
std::size_t nextLine(std::string_view text, std::size_t from) {
  constexpr std::array<std::string_view, 5> terminators = {"\r\n", "\r", "\n", "\u2028", "\u2029"};
  for (auto at = from; at < text.size(); ++at)
    for (const auto terminator : terminators)
      if (text.substr(at).starts_with(terminator))
        return at + terminator.size();
  return std::string_view::npos;
}

} // namespace

void JoinedSource::add(std::string name, std::string_view text) {
  if (text.starts_with(byteOrderMark))
    text.remove_prefix(byteOrderMark.size());
  if (!files_.empty())
    text_ += '\n';
  files_.push_back({std::move(name), text_.size(), text.size()});
  text_ += text;
}

std::string_view JoinedSource::textOf(const File& file) const {
  return std::string_view(text_).substr(file.start, file.size);
}

std::string JoinedSource::place(int line) const {
  const File* file = nullptr;
  int lineInFile = 0;
  auto next = files_.begin();
  std::size_t start = 0;
  for (int i = 1; i <= line && start != std::string::npos; ++i) {
    ++lineInFile;
    for (; next != files_.end() && next->start <= start; ++next) {
      file = &*next;
      lineInFile = 1;
    }
    start = nextLine(text_, start);
  }
  return file ? base::displayLine(file->name) + ":" + std::to_string(lineInFile) : "";
}

} // namespace ondrel::integrations
