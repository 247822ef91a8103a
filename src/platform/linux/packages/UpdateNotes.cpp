#include "platform/linux/packages/UpdateNotes.h"

#include "base/Text.h"

#include <cstddef>

namespace ondrel::platform::packages {

namespace {

constexpr std::size_t mostLines = 30;
constexpr std::string_view versionMark = "== ";
constexpr std::string_view versionEnd = " ==";
constexpr std::string_view signatureMark = "-- ";

std::string shownLine(std::string_view line) {
  line = base::trimmed(line);
  if (line.starts_with(signatureMark))
    return {};
  if (line.starts_with(versionMark) && line.ends_with(versionEnd) &&
      line.size() > versionMark.size() + versionEnd.size())
    line = line.substr(versionMark.size(), line.size() - versionMark.size() - versionEnd.size());
  constexpr std::string_view itemMark = "* ";
  if (line.starts_with(itemMark))
    return "• " + base::shortDisplayLine(line.substr(itemMark.size()));
  return base::shortDisplayLine(line);
}

} // namespace

std::string updateNotes(std::string_view text) {
  std::string notes;
  std::size_t lines = 0;
  while (!text.empty()) {
    const auto end = text.find('\n');
    const auto line = shownLine(text.substr(0, end));
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
    if (line.empty())
      continue;
    if (++lines > mostLines)
      return notes + "\n…";
    notes += (notes.empty() ? "" : "\n") + line;
  }
  return notes;
}

} // namespace ondrel::platform::packages
