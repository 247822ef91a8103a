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
  auto decoder = executables / "ondrel-decoder";
  if (!fs::exists(decoder, error))
    decoder = prefix / "libexec" / "ondrel-decoder";
  return {executables.string(), (prefix / "share" / "ondrel").string(),
          (prefix / "share" / "locale").string(), extension.string(), decoder.string()};
}

} // namespace ondrel::start
