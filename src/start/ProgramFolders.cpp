#include "start/ProgramFolders.h"

#include <filesystem>

namespace ondrel::start {

namespace fs = std::filesystem;

ProgramFolders ProgramFolders::find(const std::string& installedLibraries) {
  std::error_code error;
  const auto executables = fs::read_symlink("/proc/self/exe", error).parent_path();
  const auto prefix = executables.parent_path();
  auto extension = prefix / "lib" / "ondrel" / "webext";
  if (!fs::is_directory(extension, error))
    extension = prefix / installedLibraries / "ondrel" / "webext";
  return {executables.string(), (prefix / "share" / "ondrel").string(), extension.string()};
}

} // namespace ondrel::start
