#include "settings/EnvironmentWatch.h"

#include "platform/UserDefaults.h"

#include <utility>

namespace ondrel::settings {

EnvironmentWatch::EnvironmentWatch(AppSettings& settings)
    : told_(settings.currentEnvironment()),
      changes_(settings.defaults().changed.subscribe([this, &settings](const std::string& key) {
        const auto current = settings.currentEnvironment();
        if (key == keys::fastmailEnvironment && std::exchange(told_, current) != current)
          settings.fastmailEnvironmentDidChange.emit();
      })) {
}

} // namespace ondrel::settings
