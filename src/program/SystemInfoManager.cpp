#include "program/SystemInfoManager.h"

#include <fmt/format.h>

#include <utility>
#include <vector>

namespace ondrel::program {

SystemInfoManager::SystemInfoManager(const platform::ProgramInfo& programInfo, platform::MachineInfo info)
    : applicationName_(programInfo.displayName.empty() ? "Unknown name" : programInfo.displayName),
      applicationVersion_(programInfo.shortVersion.empty() ? "No version" : programInfo.shortVersion),
      info_(std::move(info)) {
}

std::string SystemInfoManager::summary(std::chrono::system_clock::time_point now) const {
  const auto uptime = std::chrono::floor<std::chrono::seconds>(now) - info_.bootTime;
  return fmt::format("{} {}\n"
                     "{}\n"
                     "{} - {} [{}] {:.2f} GB\n"
                     "System uptime: {}\n"
                     "Sandboxed: {}\n",
                     applicationName_, applicationVersion_, info_.systemVersion, info_.cpu,
                     info_.modelIdentifier, info_.cpuCount, info_.memoryGB, hoursMinutesAndSeconds(uptime),
                     info_.isSandboxed);
}

std::string SystemInfoManager::description(std::chrono::system_clock::time_point now) const {
  const auto rule = std::string(90, '-');
  return "\n" + rule + "\n" + summary(now) + rule;
}

std::string hoursMinutesAndSeconds(std::chrono::seconds time) {
  const std::chrono::hh_mm_ss parts(time);
  std::vector<std::pair<long long, const char*>> units{{parts.hours().count(), "hour"},
                                                       {parts.minutes().count(), "minute"},
                                                       {parts.seconds().count(), "second"}};
  while (units.size() > 1 && units.front().first == 0)
    units.erase(units.begin());
  while (units.size() > 1 && units.back().first == 0)
    units.pop_back();
  std::string text;
  for (const auto& [count, unit] : units)
    text += fmt::format("{}{} {}{}", text.empty() ? "" : ", ", count, unit, count == 1 ? "" : "s");
  return text;
}

} // namespace ondrel::program
