#include "highlights/HighlightStore.h"

#include "base/Json.h"

#include <boost/json/monotonic_resource.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include <expected>
#include <iterator>

namespace ondrel::highlights {

namespace {

namespace json = boost::json;

std::expected<HighlightStore::ByMessageId, std::string> decode(const std::string& text) {
  json::error_code error;
  json::monotonic_resource memory;
  const auto value = json::parse(text, error, &memory);
  if (error)
    return std::unexpected(error.message());
  const auto* members = value.if_object();
  if (!members)
    return std::unexpected("not an object");
  HighlightStore::ByMessageId byMessageId;
  for (const auto& [messageId, records] : *members) {
    const auto* list = records.if_array();
    if (!list)
      return std::unexpected("a message's highlights are not a list");
    if (list->empty())
      continue;
    auto& highlights = byMessageId[messageId];
    highlights.reserve(list->size());
    for (const auto& record : *list) {
      auto highlight = PersistedHighlight::decode(record);
      if (!highlight)
        return std::unexpected("a record is no highlight");
      highlights.push_back(std::move(*highlight));
    }
  }
  return byMessageId;
}

} // namespace

HighlightStore::HighlightStore(platform::Directories& directories, platform::FileStore& files)
    : directories_(directories), files_(files), saving_([this] { return write(); }) {
  load();
}

std::optional<std::string> HighlightStore::path() const {
  const auto folder = directories_.applicationSupport();
  return folder ? std::optional(*folder + "/highlights.json") : std::nullopt;
}

void HighlightStore::load() {
  const auto file = path();
  if (!file)
    return;
  const auto version = files_.version(*file);
  const auto text = files_.read(*file);
  if (!text) {
    cantRead_ = !text.error().notFound;
    return;
  }
  auto decoded = decode(*text);
  if (!decoded) {
    logger_.error("HighlightStore: decode failed: {}", decoded.error());
    cantRead_ = true;
    return;
  }
  byMessageId_ = std::move(*decoded);
  // Replaced while it was read: which of the two contents we have, nobody knows.
  if (files_.version(*file) == version)
    known_ = version;
}

const std::vector<PersistedHighlight>& HighlightStore::highlights(const std::string& messageId) const {
  static const std::vector<PersistedHighlight> none;
  const auto found = byMessageId_.find(messageId);
  return found == byMessageId_.end() ? none : found->second;
}

void HighlightStore::add(PersistedHighlight highlight, const std::string& messageId) {
  if (const auto encoded = encoded_.find(messageId); encoded != encoded_.end())
    encoded->second.append(",").append(base::jsonText(highlight.encodeWhole()));
  byMessageId_[messageId].push_back(std::move(highlight));
  save();
  changed.emit();
}

void HighlightStore::remove(const std::string& id, const std::string& messageId) {
  const auto list = byMessageId_.find(messageId);
  if (list == byMessageId_.end())
    return;
  const auto removed =
      std::erase_if(list->second, [&id](const auto& highlight) { return highlight.id == id; });
  if (removed > 0)
    encoded_.erase(messageId);
  if (list->second.empty())
    byMessageId_.erase(list);
  save();
  if (removed > 0)
    changed.emit();
}

void HighlightStore::removeAll() {
  byMessageId_.clear();
  encoded_.clear();
  save();
  changed.emit();
}

std::set<std::string> HighlightStore::allThreadIds() const {
  std::set<std::string> ids;
  for (const auto& [messageId, list] : byMessageId_)
    for (const auto& highlight : list)
      ids.insert(highlight.threadId);
  return ids;
}

std::vector<std::pair<std::string, PersistedHighlight>> HighlightStore::allHighlights() const {
  std::vector<std::pair<std::string, PersistedHighlight>> all;
  for (const auto& [messageId, list] : byMessageId_)
    for (const auto& highlight : list)
      all.emplace_back(messageId, highlight);
  return all;
}

std::string HighlightStore::encodedMap() {
  std::size_t length = 2;
  auto next = encoded_.begin(); // both maps have the same order
  for (const auto& [messageId, list] : byMessageId_) {
    const auto entry = encoded_.try_emplace(next, messageId);
    next = std::next(entry);
    auto& text = entry->second;
    if (text.empty()) {
      text = base::jsonStringLiteral(messageId) + ":[";
      for (const auto& highlight : list)
        text.append(&highlight == &list.front() ? "" : ",").append(base::jsonText(highlight.encodeWhole()));
    }
    length += text.size() + 2;
  }
  std::string map;
  map.reserve(length);
  for (const auto& [messageId, text] : encoded_)
    map.append(map.empty() ? "{" : "],").append(text);
  return map.append(map.empty() ? "{}" : "]}");
}

void HighlightStore::save() {
  if (!path()) {
    logger_.error("HighlightStore: failed to resolve Application Support URL");
    return;
  }
  if (const auto saved = saving_.run(); !saved)
    logger_.error("HighlightStore: save failed: {}", saved.error());
}

platform::RetriedSave::Result HighlightStore::write() {
  const auto file = path();
  if (!file)
    return std::unexpected("there is no folder for highlights");
  const auto saved = files_.replaceKnown(*file, encodedMap(), known_, cantRead_ ? "damaged" : "other");
  if (!saved)
    return std::unexpected(saved.error().description);
  cantRead_ = false;
  if (*saved)
    logger_.notice("HighlightStore: what was saved there by another is kept as {}", **saved);
  return {};
}

} // namespace ondrel::highlights
