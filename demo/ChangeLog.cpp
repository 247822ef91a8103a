#include "demo/ChangeLog.h"

#include "demo/GLibPointers.h"

#include <charconv>
#include <map>

namespace ondrel::demo {

ChangeLog::ChangeLog() : run_(StringPtr(g_uuid_string_random()).get(), 8) {
}

void ChangeLog::record(DataType type, Kind kind, std::string id) {
  journals_[static_cast<std::size_t>(type)].entries.push_back({kind, std::move(id)});
}

std::string ChangeLog::state(DataType type) const {
  return stateText(journal(type).base + journal(type).entries.size());
}

std::optional<ChangeLog::Changes> ChangeLog::since(DataType type, std::string_view state,
                                                   std::size_t most) const {
  const auto& [base, entries] = journal(type);
  std::size_t number = 0;
  if (!state.starts_with(run_ + "-"))
    return std::nullopt;
  state.remove_prefix(run_.size() + 1);
  const auto [end, error] = std::from_chars(state.data(), state.data() + state.size(), number);
  if (error != std::errc() || end != state.data() + state.size() || number < base ||
      number > base + entries.size()) {
    return std::nullopt;
  }

  struct Span {
    std::string id;
    Kind first;
    Kind last;
  };
  std::vector<Span> spans;
  std::map<std::string, std::size_t> spanOfId;
  Changes changes;
  auto at = number - base;
  for (; at < entries.size(); ++at) {
    const auto& entry = entries[at];
    const auto known = spanOfId.find(entry.id);
    if (known != spanOfId.end()) {
      spans[known->second].last = entry.kind;
    } else if (most > 0 && spans.size() == most) {
      changes.hasMore = true;
      break;
    } else {
      spanOfId.emplace(entry.id, spans.size());
      spans.push_back({entry.id, entry.kind, entry.kind});
    }
  }
  changes.newState = stateText(base + at);
  for (auto& [id, first, last] : spans) {
    if (first == Kind::created && last == Kind::destroyed)
      continue; // came and went between the two states
    auto& list = last == Kind::destroyed  ? changes.destroyed
                 : first == Kind::created ? changes.created
                                          : changes.updated;
    list.push_back(std::move(id));
  }
  return changes;
}

void ChangeLog::forget() {
  for (auto& journal : journals_) {
    journal.base += journal.entries.size() + 1; // so that not even the newest state is known any more
    journal.entries.clear();
  }
}

} // namespace ondrel::demo
