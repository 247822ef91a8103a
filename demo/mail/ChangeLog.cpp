#include "demo/mail/ChangeLog.h"

#include "base/Text.h"
#include "platform/linux/glib/Ref.h"

#include <set>

namespace ondrel::demo::mail {

ChangeLog::ChangeLog() : run_(std::string(glib::CString(g_uuid_string_random()).get(), 8) + "-") {
}

void ChangeLog::record(DataType type, std::string id, bool isNew) {
  journals_[static_cast<std::size_t>(type)].entries.emplace_back(std::move(id), isNew);
}

std::string ChangeLog::state(DataType type) const {
  const auto& [base, entries] = journals_[static_cast<std::size_t>(type)];
  return stateText(base + entries.size());
}

std::optional<ChangeLog::Changes> ChangeLog::since(DataType type, const std::string& state,
                                                   std::size_t most) const {
  const auto& [base, entries] = journals_[static_cast<std::size_t>(type)];
  const auto number = state.starts_with(run_) ? base::parsedInteger(state.substr(run_.size())) : std::nullopt;
  if (!number || std::cmp_less(*number, base) || std::cmp_greater(*number, base + entries.size()))
    return std::nullopt;
  Changes changes;
  std::set<std::string> seen;
  auto at = static_cast<std::size_t>(*number) - base;
  for (; at < entries.size(); ++at) {
    const auto& [id, isNew] = entries[at];
    if (seen.contains(id))
      continue;
    changes.hasMore = most > 0 && seen.size() == most;
    if (changes.hasMore)
      break;
    seen.insert(id);
    (isNew ? changes.created : changes.updated).push_back(id);
  }
  changes.newState = stateText(base + at);
  return changes;
}

void ChangeLog::forget() {
  for (auto& [base, entries] : journals_) {
    base += entries.size() + 1; // so that not even the newest state is known any more
    entries.clear();
  }
}

} // namespace ondrel::demo::mail
