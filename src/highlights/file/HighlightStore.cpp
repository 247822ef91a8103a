#include "highlights/file/HighlightStore.h"

#include "base/Json.h"
#include "base/Translation.h"

#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include <iterator>
#include <utility>

namespace ondrel::highlights {

HighlightStore::Batch::Batch(HighlightStore& store) : store_(store) {
  ++store_.batches_;
}

HighlightStore::Batch::~Batch() {
  if (--store_.batches_ == 0 && std::exchange(store_.isDirty_, false))
    store_.save();
}

HighlightStore::HighlightStore(platform::Directories& directories, platform::FileStore& files)
    : file_(files, platform::KeptFile::inApplicationSupport(directories, "highlights.json"),
            {.cantDecode = "HighlightStore: decode failed: ",
             .cantSave = "HighlightStore: save failed: ",
             .isKept = "HighlightStore: what can't be read is kept as ",
             .hasNoFolder = "HighlightStore: failed to resolve Application Support URL",
             .hasNoFolderProblem = base::tr("there is no folder for highlights")},
            {.take = [this](const std::string& text) { return take(text); },
             .text = [this] { return encoded(); },
             .didSave = [this](bool isSaved) { didSave(isSaved); }}) {
  file_.load();
  hasMerged_ = false;
}

const std::vector<PersistedHighlight>& HighlightStore::highlights(const std::string& messageId) const {
  static const std::vector<PersistedHighlight> none;
  const auto found = stored_.byMessageId.find(messageId);
  return found == stored_.byMessageId.end() ? none : found->second;
}

void HighlightStore::add(PersistedHighlight highlight, const std::string& messageId) {
  if (const auto encoded = encoded_.find(messageId); encoded != encoded_.end())
    encoded->second.append(",").append(base::jsonText(highlight.encodeWhole()));
  noteChange(highlight.id, messageId);
  stored_.byMessageId[messageId].push_back(std::move(highlight));
  save();
  changed.emit();
}

void HighlightStore::remove(const std::string& id, const std::string& messageId) {
  const auto list = stored_.byMessageId.find(messageId);
  if (list == stored_.byMessageId.end())
    return;
  const auto removed =
      std::erase_if(list->second, [&id](const auto& highlight) { return highlight.id == id; });
  if (removed > 0) {
    encoded_.erase(messageId);
    noteChange(id, messageId);
  }
  if (list->second.empty())
    stored_.byMessageId.erase(list);
  save();
  if (removed > 0)
    changed.emit();
}

void HighlightStore::removeAll() {
  for (const auto& [messageId, list] : stored_.byMessageId)
    for (const auto& highlight : list)
      noteChange(highlight.id, messageId);
  stored_.byMessageId.clear();
  encoded_.clear();
  save();
  changed.emit();
}

std::set<std::string> HighlightStore::allThreadIds() const {
  std::set<std::string> ids;
  for (const auto& [messageId, list] : stored_.byMessageId)
    for (const auto& highlight : list)
      ids.insert(highlight.threadId);
  return ids;
}

std::vector<std::pair<std::string, PersistedHighlight>> HighlightStore::allHighlights() const {
  std::vector<std::pair<std::string, PersistedHighlight>> all;
  for (const auto& [messageId, list] : stored_.byMessageId)
    for (const auto& highlight : list)
      all.emplace_back(messageId, highlight);
  return all;
}

bool HighlightStore::isUnsaved(const std::string& id, const std::string& messageId) const {
  const auto ids = changes_.find(messageId);
  return ids != changes_.end() && ids->second.contains(id);
}

std::string HighlightStore::encoded() {
  const auto& further = stored_.further;
  std::size_t length = further.size() + 3;
  auto next = encoded_.begin(); // both maps have the same order
  for (const auto& [messageId, list] : stored_.byMessageId) {
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
  std::string whole;
  whole.reserve(length);
  whole.append("{").append(further);
  for (const auto& [messageId, text] : encoded_)
    whole.append(whole.size() == 1 ? "" : ",").append(text).append("]");
  return whole.append("}");
}

void HighlightStore::save() {
  if (batches_ > 0)
    isDirty_ = true;
  else
    file_.save();
}

std::expected<void, std::string> HighlightStore::take(const std::string& text) {
  auto theirs = StoredHighlights::decode(text);
  if (!theirs)
    return std::unexpected(std::move(theirs.error()));
  for (const auto& [messageId, ids] : changes_) {
    auto list = merged(highlights(messageId), std::move(theirs->byMessageId[messageId]), ids);
    if (list.empty())
      theirs->byMessageId.erase(messageId);
    else
      theirs->byMessageId[messageId] = std::move(list);
  }
  if (theirs->byMessageId != stored_.byMessageId) {
    hasMerged_ = true;
    encoded_.clear();
  }
  stored_ = std::move(*theirs);
  return {};
}

void HighlightStore::didSave(bool isSaved) {
  if (isSaved)
    changes_.clear();
  if (std::exchange(hasMerged_, false))
    changed.emit();
}

} // namespace ondrel::highlights
