#include "jmap/protocol/EventLines.h"

#include <algorithm>

namespace ondrel::jmap {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view dataField = "data:";
constexpr std::string_view idField = "id";
constexpr std::size_t longestId = 256;

// One that can't stand in a header counts as not said, and so does one without an end.
std::optional<std::string> idIn(std::string_view line) {
  if (!line.starts_with(idField))
    return std::nullopt;
  line.remove_prefix(idField.size());
  if (!line.empty() && line.front() != ':')
    return std::nullopt;
  line.remove_prefix(std::min<std::size_t>(line.size(), 1));
  if (line.starts_with(' '))
    line.remove_prefix(1);
  const bool isSendable = std::ranges::none_of(line, [](unsigned char c) { return c < ' ' || c == 0x7F; });
  return isSendable && line.size() <= longestId ? std::optional(std::string(line)) : std::nullopt;
}

} // namespace

// A word that has a quote at both ends only can begin anew nowhere but at its last character.
void EventLines::Finder::feed(std::string_view piece) {
  if (found_)
    return;
  std::size_t at = 0;
  while (at < piece.size()) {
    if (matched_ == 0) {
      at = piece.find('"', at);
      if (at == std::string_view::npos)
        return;
    }
    const auto wanted = word_.substr(matched_);
    const auto here = piece.substr(at, wanted.size());
    const auto [differs, unused] = std::ranges::mismatch(wanted, here);
    const auto equal = static_cast<std::size_t>(differs - wanted.begin());
    if (equal == wanted.size()) {
      found_ = true;
      return;
    }
    if (equal == here.size()) { // goes on in the next piece
      matched_ += equal;
      return;
    }
    at += equal;
    matched_ = 0;
  }
}

std::vector<EventLine> EventLines::feed(std::string_view chunk) {
  std::vector<EventLine> lines;
  if (afterCarriageReturn_ && !chunk.empty()) {
    afterCarriageReturn_ = false;
    if (chunk.front() == '\n')
      chunk.remove_prefix(1);
  }
  while (!chunk.empty()) {
    const auto end = chunk.find_first_of("\r\n");
    if (end == std::string_view::npos) {
      take(chunk);
      break;
    }
    take(chunk.substr(0, end));
    lines.push_back(endLine());
    const bool carriageReturn = chunk[end] == '\r';
    chunk.remove_prefix(end + 1);
    if (carriageReturn && chunk.empty())
      afterCarriageReturn_ = true;
    else if (carriageReturn && chunk.front() == '\n')
      chunk.remove_prefix(1);
  }
  return lines;
}

std::vector<EventLine> EventLines::finish() {
  if (started_ == 0)
    return {};
  return {endLine()};
}

void EventLines::take(std::string_view piece) {
  const auto begin = piece.substr(0, start_.size() - started_);
  std::ranges::copy(begin, start_.begin() + static_cast<std::ptrdiff_t>(started_));
  started_ += begin.size();
  isCut_ |= begin.size() < piece.size();
  mailbox_.feed(piece);
  email_.feed(piece);
}

EventLine EventLines::endLine() {
  std::string_view start(start_.data(), started_);
  if (firstLine_ && start.starts_with(byteOrderMark))
    start.remove_prefix(byteOrderMark.size());
  EventLine line{.isData = start.starts_with(dataField),
                 .namesMailbox = mailbox_.found(),
                 .namesEmail = email_.found(),
                 .isEmpty = start.empty(),
                 .id = isCut_ ? std::nullopt : idIn(start)};
  mailbox_.reset();
  email_.reset();
  started_ = 0;
  isCut_ = false;
  firstLine_ = false;
  return line;
}

} // namespace ondrel::jmap
