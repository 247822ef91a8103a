#pragma once

#include <optional>
#include <string>

namespace ondrel::platform {

// The program's icon in the desktop's launcher.
class LauncherBadge {
 public:
  virtual ~LauncherBadge() = default;
  // A number in decimal on the icon; nullopt takes it away. Desktops without such a place ignore it.
  virtual void setLabel(const std::optional<std::string>& label) = 0;
};

} // namespace ondrel::platform
