#pragma once

#include "async/Scope.h"
#include "async/Task.h"

#include <optional>
#include <string>

namespace ondrel::app {
class WindowManager;
}

namespace ondrel::platform {
class FileStore;
}

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::highlights {

class HighlightImport;
class HighlightStore;

// Tells the user after the start, over the page in front, that highlights lie in a file that was kept beside
// the store's, or in that one when it can't be read, and imports it when asked to. The newest comes first,
// the next one when that is done: it was imported, or the user was told why it can't be. With each start
// again until then. One for the process, main thread only.
class KeptHighlights {
 public:
  // All outlive it.
  struct Services {
    HighlightStore& store;
    platform::FileStore& files;
    settings::AppSettings& settings;
    app::WindowManager& windowManager;
    HighlightImport& highlightImport;
  };

  explicit KeptHighlights(Services services) : services_(services) {}

  void start() { scope_.spawn(tell()); }

 private:
  async::Task<void> tell();
  async::Task<void> importNewest();
  std::optional<std::string> newest() const; // of those that weren't imported yet
  std::string imported() const;              // marks of files, each in a line
  std::string mark(const std::string& path) const;

  const Services services_;
  async::Scope scope_;
};

} // namespace ondrel::highlights
