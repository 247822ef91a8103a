#include "platform/linux/files/TemporaryFile.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <random>
#include <sys/file.h>
#include <sys/stat.h>
#include <vector>

namespace ondrel::platform::files {

namespace {

constexpr std::size_t suffixLength = 6;
// Names in a folder are at most 255 bytes long.
constexpr std::size_t longestTarget = 240;

struct CloseDirectory {
  void operator()(DIR* directory) const { closedir(directory); }
};

// Locks a new file and tells whether a sweep was faster. Not all file systems have locks; there the name is
// safe enough.
bool isSwept(int file) {
  if (flock(file, LOCK_EX | LOCK_NB) != 0)
    return errno == EWOULDBLOCK;
  struct stat status{};
  return fstat(file, &status) == 0 && status.st_nlink == 0;
}

} // namespace

std::string TemporaryFile::prefixFor(std::string_view target) {
  return fmt::format(".{}.tmp-", target.substr(0, longestTarget));
}

TemporaryFile::~TemporaryFile() {
  if (!name_.empty())
    unlinkat(folder_, name_.c_str(), 0);
}

int TemporaryFile::create() {
  std::random_device random;
  for (int attempt = 0; attempt < 100; ++attempt) {
    const auto name = fmt::format("{}{:06x}", prefix_, random() & 0xFFFFFFU);
    file_ =
        UniqueFd(openat(folder_, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
    if (file_) {
      // A sweep in another process may come between, and take it for a left-over.
      if (isSwept(file_.get()))
        continue;
      name_ = name;
      return 0;
    }
    if (errno != EEXIST && errno != EINTR)
      return errno;
  }
  return EEXIST;
}

int TemporaryFile::writeAndFlush(std::string_view content) {
  while (!content.empty()) {
    const auto written = write(file_.get(), content.data(), content.size());
    if (written < 0 && errno == EINTR)
      continue;
    if (written < 0)
      return errno;
    content.remove_prefix(static_cast<std::size_t>(written));
  }
  return fsync(file_.get()) == 0 ? 0 : errno;
}

int TemporaryFile::setMode(mode_t mode) {
  return fchmod(file_.get(), mode) == 0 ? 0 : errno;
}

int TemporaryFile::moveInto(const std::string& target) {
  // Network file systems may tell a failed write only now.
  if (close(file_.release()) != 0 && errno != EINTR)
    return errno;
  if (renameat(folder_, name_.c_str(), folder_, target.c_str()) != 0)
    return errno;
  name_.clear();
  return 0;
}

void TemporaryFile::sweep(int folder, std::string_view target) {
  const auto prefix = prefixFor(target);
  UniqueFd listing(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const std::unique_ptr<DIR, CloseDirectory> directory(listing ? fdopendir(listing.get()) : nullptr);
  if (!directory)
    return;
  listing.release();
  std::vector<std::string> names;
  while (const dirent* entry = readdir(directory.get())) {
    const std::string_view name = entry->d_name;
    if (name.size() == prefix.size() + suffixLength && name.starts_with(prefix))
      names.emplace_back(name);
  }
  for (const auto& name : names) {
    const UniqueFd file(openat(folder, name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (file && flock(file.get(), LOCK_EX | LOCK_NB) == 0)
      unlinkat(folder, name.c_str(), 0);
  }
}

} // namespace ondrel::platform::files
