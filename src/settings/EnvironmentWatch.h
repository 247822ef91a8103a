#pragma once

#include "base/Event.h"
#include "settings/AppSettings.h"

namespace ondrel::settings {

// Emits fastmailEnvironmentDidChange when another environment is stored, whoever has chosen it: the user in
// the settings window, or somebody else in the file.
class EnvironmentWatch {
 public:
  // The settings outlive it.
  explicit EnvironmentWatch(AppSettings& settings);

 private:
  FastmailEnvironment told_;
  base::Subscription changes_;
};

} // namespace ondrel::settings
