#include "highlights/file/HighlightPayload.h"

#include "base/Base64.h"
#include "base/Json.h"

#include <boost/json/monotonic_resource.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>

namespace ondrel::highlights {

namespace {

namespace json = boost::json;

constexpr std::size_t base64Slice = std::size_t{1} << 20; // characters, a multiple of 4
// A selection is rarely longer than a page; parsed, a few bytes can become many times as many.
constexpr std::size_t longestRecord = std::size_t{16} << 20;

std::optional<ExportedHighlight> decodedRecord(std::string_view text) {
  json::error_code error;
  json::monotonic_resource memory;
  const auto value = json::parse(text, error, &memory);
  const base::JsonReader record(value);
  auto messageId = record["messageId"].string();
  auto highlight = PersistedHighlight::decode(record["highlight"]);
  if (!messageId || !highlight)
    return std::nullopt;
  return ExportedHighlight{*std::move(messageId), *std::move(highlight)};
}

} // namespace

std::string encodedPayload(const std::vector<ExportedHighlight>& highlights) {
  std::string text = "[";
  for (const auto& each : highlights) {
    if (&each != &highlights.front())
      text += ',';
    text.append(base::jsonText(json::object{{"messageId", json::string_view(each.messageId)},
                                            {"highlight", each.highlight.encodeWhole()}}));
  }
  text += ']';
  return base::base64Encoded({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

std::optional<std::string_view> findPayload(std::string_view document) {
  constexpr std::string_view start = R"(id="ondrel-highlights-data")";
  constexpr std::string_view end = "</script>";
  // Where the last looks for a bracket ended: none is looked for twice in the same stretch.
  std::size_t tagEnd = 0;
  std::size_t textEnd = 0;
  for (auto found = document.find(start); found != document.npos; found = document.find(start, found + 1)) {
    const auto behind = found + start.size();
    if (tagEnd < behind)
      tagEnd = document.find('>', behind);
    if (tagEnd == document.npos)
      return std::nullopt;
    const auto textStart = tagEnd + 1;
    if (textEnd < textStart)
      textEnd = document.find('<', textStart);
    if (textEnd == document.npos)
      return std::nullopt;
    if (textEnd > textStart && document.substr(textEnd).starts_with(end))
      return document.substr(textStart, textEnd - textStart);
  }
  return std::nullopt;
}

PayloadDecoder::State PayloadDecoder::step() {
  if (state_ != State::working)
    return state_;
  if (!scanner_)
    decodeBase64();
  else
    decodeRecord();
  return state_;
}

std::vector<ExportedHighlight> PayloadDecoder::take() {
  return state_ == State::done ? std::exchange(highlights_, {}) : std::vector<ExportedHighlight>();
}

void PayloadDecoder::decodeBase64() {
  const auto slice = base64_.substr(0, base64Slice);
  base64_.remove_prefix(slice.size());
  const auto bytes = base::base64Decoded(slice);
  // Padding belongs to the end alone.
  if (!bytes || (!base64_.empty() && bytes->size() != slice.size() / 4 * 3)) {
    state_ = State::notBase64;
    return;
  }
  json_.append(reinterpret_cast<const char*>(bytes->data()), bytes->size());
  if (base64_.empty())
    scanner_.emplace(json_);
}

// Element by element: what belongs to one is found by its brackets and quotes alone, and whether it is good
// JSON the parser says, so that the whole is accepted exactly when it is a good array.
void PayloadDecoder::decodeRecord() {
  if (!isOpen_) {
    isOpen_ = scanner_->take('[');
    isLast_ = isOpen_ && scanner_->take(']');
    if (!isOpen_)
      state_ = State::corrupted;
  } else if (!isLast_) {
    const auto element = scanner_->takeElement(longestRecord);
    auto record = element ? decodedRecord(*element) : std::nullopt;
    isLast_ = record && scanner_->take(']');
    if (!record || (!isLast_ && !scanner_->take(',')))
      state_ = State::corrupted;
    else
      highlights_.push_back(std::move(*record));
  }
  if (isLast_)
    state_ = scanner_->isAtEnd() ? State::done : State::corrupted;
}

} // namespace ondrel::highlights
