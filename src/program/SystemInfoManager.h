#pragma once

#include "platform/MachineInfo.h"
#include "platform/ProgramInfo.h"

#include <chrono>
#include <string>

namespace ondrel::program {

// What the log tells at the start of the program and of the machine that it runs on.
class SystemInfoManager {
 public:
  SystemInfoManager(const platform::ProgramInfo& programInfo, platform::MachineInfo info);

  const std::string& applicationName() const { return applicationName_; }
  const std::string& applicationVersion() const { return applicationVersion_; }
  // Some lines: the program, the machine.
  std::string summary(std::chrono::system_clock::time_point now) const;
  // The same between two rules; how long the machine has been running by then is one of them.
  std::string description(std::chrono::system_clock::time_point now) const;

 private:
  const std::string applicationName_;
  const std::string applicationVersion_;
  const platform::MachineInfo info_;
};

// "2 hours, 0 minutes, 1 second": without zeros at both ends.
std::string hoursMinutesAndSeconds(std::chrono::seconds time);

} // namespace ondrel::program
