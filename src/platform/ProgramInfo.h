#pragma once

#include <string>

namespace ondrel::platform {

// What the program knows of itself, fixed when it was built.
struct ProgramInfo {
  std::string identifier; // "org.velmora.Ondrel"
  std::string displayName;
  std::string shortVersion;
  std::string buildNumber; // decimal
  // Its desktop file offers it for mail links, so that it can become the default mail application.
  bool isMailApplication = false;
};

} // namespace ondrel::platform
