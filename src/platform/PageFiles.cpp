#include "platform/PageFiles.h"

#include "base/Text.h"

#include <algorithm>

namespace ondrel::platform {

namespace {

using Reason = RefusedFile::Reason;

std::string sentence(const std::vector<RefusedFile>& refused, Reason reason, const std::string& ofOne,
                     const std::string& ofMany) {
  const auto number = std::ranges::count(refused, reason, &RefusedFile::reason);
  if (number == 0)
    return {};
  if (number > 1)
    return std::to_string(number) + ofMany;
  const auto name = std::ranges::find(refused, reason, &RefusedFile::reason)->name;
  return "“" + base::displayLine(name) + "”" + ofOne;
}

} // namespace

std::optional<std::string> refusalText(const std::vector<RefusedFile>& refused) {
  if (refused.empty())
    return std::nullopt;
  const auto folders = sentence(refused, Reason::folder, " is a folder. Only files can be added.",
                                " folders were left out. Only files can be added.");
  const auto unreadable = sentence(refused, Reason::unreadable, " can't be read.", " files can't be read.");
  return folders + (folders.empty() || unreadable.empty() ? "" : " ") + unreadable;
}

} // namespace ondrel::platform
