#pragma once

#include "platform/MachineInfo.h"

#include <string>

namespace ondrel::platform::files {

// Reads the system's own files on the machine: os-release, /proc and the firmware's tables below `root`, and
// asks the kernel for the rest.
MachineInfo machineInfo(const std::string& root = "");

} // namespace ondrel::platform::files
