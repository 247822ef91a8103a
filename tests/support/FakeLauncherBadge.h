#pragma once

#include "platform/desktop/LauncherBadge.h"

#include <optional>
#include <string>
#include <vector>

namespace ondrel::support {

class FakeLauncherBadge final : public platform::LauncherBadge {
 public:
  void setLabel(const std::optional<std::string>& value) override {
    label = value;
    labels.push_back(value);
  }

  std::optional<std::string> label;               // that stands there now
  std::vector<std::optional<std::string>> labels; // in the order of setting
};

} // namespace ondrel::support
