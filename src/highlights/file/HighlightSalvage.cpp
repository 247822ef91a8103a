#include "highlights/file/HighlightSalvage.h"

#include <boost/json/monotonic_resource.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include <utility>

namespace ondrel::highlights {

namespace {

namespace json = boost::json;

constexpr std::size_t longestRecord = std::size_t{16} << 20;

} // namespace

bool HighlightSalvage::looksLikeFile(std::string_view text) {
  return JsonScanner(text).take('{');
}

HighlightSalvage::HighlightSalvage(std::string_view text) : text_(text), scanner_(text) {
  isDone_ = isDamaged_ = !scanner_.take('{');
}

bool HighlightSalvage::step() {
  if (isDone_)
    return false;
  const auto start = scanner_.position();
  if (messageId_ ? readRecord() : openMessage())
    return !isDone_;
  isDamaged_ = true;
  isDone_ = !skipToNextMessage(start);
  return !isDone_;
}

// Or passes over a member that is no list, or ends. False where the text makes no sense.
bool HighlightSalvage::openMessage() {
  if (scanner_.take('}')) {
    isDone_ = true;
    isDamaged_ = isDamaged_ || !scanner_.isAtEnd();
    return true;
  }
  scanner_.take(',');
  const auto key = scanner_.takeString();
  json::error_code error;
  const auto messageId = key ? json::parse(*key, error) : json::value();
  if (!messageId.is_string() || !scanner_.take(':'))
    return false;
  if (!scanner_.take('['))
    return scanner_.takeElement(longestRecord).has_value();
  messageId_ = messageId.get_string();
  return true;
}

bool HighlightSalvage::readRecord() {
  if (scanner_.take(']')) {
    messageId_.reset();
    return true;
  }
  scanner_.take(',');
  const auto element = scanner_.takeElement(longestRecord);
  json::error_code error;
  json::monotonic_resource memory;
  const auto record = element ? json::parse(*element, error, &memory) : json::value();
  if (!element || error)
    return false;
  if (auto highlight = PersistedHighlight::decode(base::JsonReader(record)))
    highlights_.push_back({*messageId_, std::move(*highlight)});
  else
    isDamaged_ = true;
  return true;
}

// A list that is closed and a name behind it, as they can't stand within a string: what follows belongs to
// that message for certain.
bool HighlightSalvage::skipToNextMessage(std::size_t from) {
  constexpr std::string_view between = "],\"";
  for (auto found = text_.find(between, from); found != text_.npos; found = text_.find(between, found + 1)) {
    const auto name = found + between.size() - 1;
    scanner_.setPosition(name);
    if (!scanner_.takeString() || !scanner_.take(':') || !scanner_.take('[') || !scanner_.take('{'))
      continue;
    scanner_.setPosition(name);
    messageId_.reset();
    return true;
  }
  return false;
}

} // namespace ondrel::highlights
