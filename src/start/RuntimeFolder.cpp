#include "start/RuntimeFolder.h"

#include "start/ThrowAwayFolder.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace ondrel::start {

namespace fs = std::filesystem;

RuntimeFolder::RuntimeFolder() {
  std::error_code error;
  const char* named = std::getenv("XDG_RUNTIME_DIR");
  if (named && fs::is_directory(named, error) && access(named, W_OK | X_OK) == 0)
    return;
  const auto parent = fs::temp_directory_path(error);
  auto folder = ((error ? fs::path("/tmp") : parent) / "ondrel-runtime-XXXXXX").string();
  if (!mkdtemp(folder.data()))
    return;
  temporary_ = folder;
  setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
}

RuntimeFolder::~RuntimeFolder() {
  if (!temporary_.empty())
    removeThrowAwayFolder(temporary_);
}

} // namespace ondrel::start
