#include "jmap/EventLines.h"

#include <algorithm>

namespace ondrel::jmap {

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view dataField = "data:";

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
  if (empty_)
    return {};
  return {endLine()};
}

void EventLines::take(std::string_view piece) {
  if (piece.empty())
    return;
  empty_ = false;
  const auto begin = piece.substr(0, start_.size() - started_);
  std::ranges::copy(begin, start_.begin() + static_cast<std::ptrdiff_t>(started_));
  started_ += begin.size();
  mailbox_.feed(piece);
  email_.feed(piece);
}

EventLine EventLines::endLine() {
  std::string_view start(start_.data(), started_);
  if (firstLine_ && start.starts_with(byteOrderMark))
    start.remove_prefix(byteOrderMark.size());
  const EventLine line{start.starts_with(dataField), mailbox_.found(), email_.found()};
  mailbox_.reset();
  email_.reset();
  started_ = 0;
  empty_ = true;
  firstLine_ = false;
  return line;
}

} // namespace ondrel::jmap
