#include "platform/linux/files/BackupFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace ondrel::platform::files {

// The first free place, else that of the oldest. A place that holds this very file already is the file's own.
std::string BackupFile::place(const std::string& path) {
  struct stat file{};
  const bool isThere = lstat(path.c_str(), &file) == 0;
  std::string chosen;
  bool isFree = false;
  timespec oldest{};
  for (int n = 1; n <= mostKept; ++n) {
    auto candidate = fmt::format("{}.damaged-{}", path, n);
    struct stat status{};
    if (lstat(candidate.c_str(), &status) != 0) {
      if (!std::exchange(isFree, true))
        chosen = std::move(candidate);
      continue;
    }
    if (isThere && status.st_dev == file.st_dev && status.st_ino == file.st_ino)
      return candidate;
    const auto& time = status.st_mtim;
    if (!isFree &&
        (chosen.empty() || std::pair(time.tv_sec, time.tv_nsec) < std::pair(oldest.tv_sec, oldest.tv_nsec))) {
      chosen = std::move(candidate);
      oldest = time;
    }
  }
  return chosen;
}

std::expected<std::string, int> BackupFile::link(const std::string& path) {
  auto target = place(path);
  struct stat file{};
  struct stat there{};
  if (lstat(path.c_str(), &file) != 0)
    return std::unexpected(errno);
  if (lstat(target.c_str(), &there) == 0) {
    if (there.st_dev == file.st_dev && there.st_ino == file.st_ino)
      return target;
    if (unlink(target.c_str()) != 0 && errno != ENOENT)
      return std::unexpected(errno);
  }
  if (::link(path.c_str(), target.c_str()) == 0)
    return target;
  // Not all file systems have hard links. A crash in this moment leaves the file under its new name alone.
  const bool hasNoLinks = errno == EPERM || errno == EOPNOTSUPP || errno == EMLINK;
  if (!hasNoLinks || std::rename(path.c_str(), target.c_str()) != 0)
    return std::unexpected(errno);
  return target;
}

std::vector<std::string> BackupFile::all(const std::string& path) {
  std::vector<std::pair<std::int64_t, std::string>> found;
  for (const auto* why : {"damaged", "other"})
    for (int n = 1; n <= mostKept; ++n) {
      auto candidate = fmt::format("{}.{}-{}", path, why, n);
      if (const auto version = fileVersion(candidate))
        found.emplace_back(version->modified, std::move(candidate));
    }
  std::ranges::sort(found, std::greater<>(), &std::pair<std::int64_t, std::string>::first);
  std::vector<std::string> paths;
  for (auto& [time, name] : found)
    paths.push_back(std::move(name));
  return paths;
}

std::expected<FileVersion, int> fileVersion(const std::string& path) {
  struct stat status{};
  if (stat(path.c_str(), &status) != 0)
    return std::unexpected(errno);
  constexpr std::int64_t nanosecondsInSecond = 1'000'000'000;
  return FileVersion{.device = status.st_dev,
                     .inode = status.st_ino,
                     .size = status.st_size,
                     .modified = status.st_mtim.tv_sec * nanosecondsInSecond + status.st_mtim.tv_nsec};
}

} // namespace ondrel::platform::files
