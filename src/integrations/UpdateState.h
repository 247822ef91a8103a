#pragma once

#include "platform/SoftwareUpdater.h"

#include <string>

namespace ondrel::integrations {

// How far the program is on the way to its next version.
struct UpdateState {
  enum class Phase {
    idle,
    checking,
    upToDate,
    available, // `update` can be downloaded; `problem` is what the last try came to
    downloading,
    ready, // `update` lies on this computer; `problem` as above
    installing,
    needsRestart, // the next version is installed, by us or by somebody else
    failed,       // of a check: `problem` tells why
  };
  Phase phase = Phase::idle;
  platform::SoftwareUpdate update{}; // from available to needsRestart; empty where somebody else installed it
  platform::UpdateProgress progress{};
  std::string problem{}; // a sentence for the user

  bool operator==(const UpdateState&) const = default;
};

} // namespace ondrel::integrations
