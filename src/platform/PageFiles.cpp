#include "platform/PageFiles.h"

#include "base/Text.h"
#include "base/Translation.h"

#include <algorithm>

namespace ondrel::platform {

namespace {

using Reason = RefusedFile::Reason;

struct Refused {
  unsigned long count = 0;
  std::string first; // its name, fit to be shown
};

Refused refusedFor(const std::vector<RefusedFile>& refused, Reason reason) {
  const auto first = std::ranges::find(refused, reason, &RefusedFile::reason);
  return {static_cast<unsigned long>(std::ranges::count(refused, reason, &RefusedFile::reason)),
          first == refused.end() ? "" : base::displayLine(first->name)};
}

// The name stands for the number where there is one alone.
std::string foldersText(const Refused& refused) {
  const auto& [count, first] = refused;
  if (count == 1)
    return base::trFormat("“{}” is a folder. Only files can be added.", first);
  return count == 0 ? ""
                    : base::trPlural("{} folder was left out. Only files can be added.",
                                     "{} folders were left out. Only files can be added.", count, count);
}

std::string unreadableText(const Refused& refused) {
  const auto& [count, first] = refused;
  if (count == 1)
    return base::trFormat("“{}” can't be read.", first);
  return count == 0 ? "" : base::trPlural("{} file can't be read.", "{} files can't be read.", count, count);
}

} // namespace

std::optional<std::string> refusalText(const std::vector<RefusedFile>& refused) {
  if (refused.empty())
    return std::nullopt;
  const auto folders = foldersText(refusedFor(refused, Reason::folder));
  const auto unreadable = unreadableText(refusedFor(refused, Reason::unreadable));
  return folders + (folders.empty() || unreadable.empty() ? "" : " ") + unreadable;
}

} // namespace ondrel::platform
