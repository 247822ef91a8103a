#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "base/Observable.h"

#include <optional>
#include <string>

namespace ondrel::platform {
class Clipboard;
}

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::app {

// The address of a message of the service that the user has copied. Main thread only.
class CopiedLink {
 public:
  // Both outlive it.
  CopiedLink(platform::Clipboard& clipboard, settings::AppSettings& settings)
      : clipboard_(clipboard), settings_(settings) {}

  // Reads the clipboard; the address follows a moment later.
  void refresh() { scope_.spawn(read()); }

  base::Observable<std::optional<std::string>> url;

 private:
  async::Task<void> read();

  platform::Clipboard& clipboard_;
  settings::AppSettings& settings_;
  async::Scope scope_;
};

} // namespace ondrel::app
