#include "start/HomeFolder.h"

#include "base/Translation.h"
#include "start/ThrowAwayFolder.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace ondrel::start {

namespace fs = std::filesystem;

namespace {

bool isFolder(const char* path) {
  std::error_code error;
  return path && path[0] == '/' && fs::is_directory(path, error);
}

} // namespace

std::expected<HomeFolder, std::string> HomeFolder::find() {
  const auto* named = std::getenv("HOME");
  if (isFolder(named))
    return HomeFolder({});
  if (!named || !*named) {
    const auto* user = getpwuid(getuid());
    if (user && isFolder(user->pw_dir)) {
      setenv("HOME", user->pw_dir, 1);
      return HomeFolder({});
    }
  }
  std::error_code error;
  const auto parent = fs::temp_directory_path(error);
  auto folder = ((error ? fs::path("/tmp") : parent) / "ondrel-home-XXXXXX").string();
  if (!mkdtemp(folder.data()))
    return std::unexpected(base::trFormat("there is no home folder, and none can be made as {0}: {1}", folder,
                                          std::strerror(errno)));
  setenv("HOME", folder.c_str(), 1);
  return HomeFolder(std::move(folder));
}

HomeFolder::~HomeFolder() {
  if (!temporary_.empty())
    removeThrowAwayFolder(temporary_);
}

} // namespace ondrel::start
