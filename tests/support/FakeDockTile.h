#pragma once

#include "platform/DockTile.h"

#include <optional>
#include <string>
#include <vector>

namespace ondrel::support {

class FakeDockTile final : public platform::DockTile {
 public:
  void setBadgeLabel(const std::optional<std::string>& value) override {
    label = value;
    labels.push_back(value);
  }

  std::optional<std::string> label;               // that stands there now
  std::vector<std::optional<std::string>> labels; // in the order of setting
};

} // namespace ondrel::support
