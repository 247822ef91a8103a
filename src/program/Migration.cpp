#include "program/Migration.h"

#include "base/Text.h"
#include "platform/FileStore.h"
#include "platform/ProgramInfo.h"
#include "platform/UserDefaults.h"
#include "settings/SettingsKeys.h"

namespace ondrel::program {

namespace {

constexpr std::int64_t firstBuildWithoutOldKeys = 72;
constexpr std::int64_t firstBuildWithoutLogFolder = 84;
constexpr std::string_view oldKeys[] = {"baseURL", "_savedPages", "_hookTickerRunning", "_emailIds"};

void removeLogFolder(const platform::ProgramInfo& programInfo, platform::Directories& directories,
                     platform::FileStore& files) {
  const auto support = directories.applicationSupport();
  if (!support)
    return;
  const auto folder =
      *support + "/" + (programInfo.identifier.empty() ? "Ondrel" : programInfo.identifier) + "/Logs";
  if (files.exists(folder)) [[maybe_unused]]
    const auto ignored = files.removeRecursively(folder);
}

} // namespace

void migrate(const platform::ProgramInfo& programInfo, platform::UserDefaults& defaults,
             platform::Directories& directories, platform::FileStore& files) {
  const auto& key = settings::keys::lastMigratedBuild;
  const auto stored = defaults.integer(key.name).value_or(key.fallback);
  const std::int64_t running = base::parsedInteger(programInfo.buildNumber).value_or(0);
  if (stored >= running)
    return;
  if (stored < firstBuildWithoutOldKeys)
    for (const auto old : oldKeys)
      defaults.remove(old);
  if (stored < firstBuildWithoutOldKeys || (stored >= 0 && stored < firstBuildWithoutLogFolder))
    removeLogFolder(programInfo, directories, files);
  defaults.set(key.name, running);
}

} // namespace ondrel::program
