#pragma once

#include <chrono>
#include <string>

namespace ondrel::platform {

// What a report of a fault needs to know of the machine. A text is empty where the machine doesn't tell.
struct MachineInfo {
  std::string systemVersion; // of the operating system, with its name
  std::string cpu;
  std::string modelIdentifier;
  int cpuCount = 0;
  double memoryGB = 0; // of 2 to the power of 30 bytes
  std::chrono::sys_seconds bootTime;
  bool isSandboxed = false;
};

} // namespace ondrel::platform
