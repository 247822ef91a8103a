#include "platform/linux/windows/PanelFolders.h"

#include "platform/FileStore.h"
#include "platform/UserDefaults.h"

#include <filesystem>

namespace ondrel::platform::windows {

namespace fs = std::filesystem;

std::string PanelFolders::start(std::string_view key) const {
  std::error_code error;
  const auto last = defaults_.string(key);
  if (last && last->starts_with('/') && fs::is_directory(*last, error))
    return *last;
  const auto downloads = directories_.downloads();
  if (!downloads)
    return directories_.home();
  fs::create_directories(*downloads, error);
  return fs::is_directory(*downloads, error) ? *downloads : directories_.home();
}

void PanelFolders::remember(std::string_view key, const std::string& chosenFile) {
  defaults_.set(key, fs::path(chosenFile).parent_path().string());
}

} // namespace ondrel::platform::windows
