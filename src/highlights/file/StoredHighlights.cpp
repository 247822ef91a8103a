#include "highlights/file/StoredHighlights.h"

#include "base/Json.h"

#include <boost/json/monotonic_resource.hpp>
#include <boost/json/object.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value.hpp>

#include <algorithm>

namespace ondrel::highlights {

namespace json = boost::json;

std::expected<StoredHighlights, std::string> StoredHighlights::decode(std::string_view text) {
  json::error_code error;
  json::monotonic_resource memory;
  const auto value = json::parse(text, error, &memory);
  if (error)
    return std::unexpected(error.message());
  const auto* members = value.if_object();
  if (!members)
    return std::unexpected("not an object");
  StoredHighlights stored;
  for (const auto& [messageId, records] : *members) {
    const auto* list = records.if_array();
    if (!list) {
      stored.further.append(stored.further.empty() ? "" : ",")
          .append(base::jsonStringLiteral(messageId) + ":" + base::jsonText(records));
      continue;
    }
    if (list->empty())
      continue;
    auto& highlights = stored.byMessageId[messageId];
    highlights.reserve(list->size());
    for (const auto& record : *list) {
      auto highlight = PersistedHighlight::decode(base::JsonReader(record));
      if (!highlight)
        return std::unexpected("a record is no highlight");
      highlights.push_back(std::move(*highlight));
    }
  }
  return stored;
}

std::vector<PersistedHighlight> merged(const std::vector<PersistedHighlight>& ours,
                                       std::vector<PersistedHighlight> theirs,
                                       const std::set<std::string>& changed) {
  const auto idsOf = [](const std::vector<PersistedHighlight>& list) {
    std::set<std::string> ids;
    for (const auto& each : list)
      ids.insert(each.id);
    return ids;
  };
  const auto ourIds = idsOf(ours);
  std::erase_if(theirs,
                [&](const auto& each) { return changed.contains(each.id) && !ourIds.contains(each.id); });
  const auto theirIds = idsOf(theirs);
  const auto isAdded = [&](const auto& each) {
    return changed.contains(each.id) && !theirIds.contains(each.id);
  };
  if (std::ranges::none_of(ours, isAdded))
    return theirs;

  std::vector<PersistedHighlight> all;
  for (const auto& each : ours) {
    if (changed.contains(each.id))
      all.push_back(each);
    else if (const auto same = std::ranges::find(theirs, each.id, &PersistedHighlight::id);
             same != theirs.end())
      all.push_back(*same);
  }
  for (auto& each : theirs)
    if (!ourIds.contains(each.id))
      all.push_back(std::move(each));
  return all;
}

} // namespace ondrel::highlights
