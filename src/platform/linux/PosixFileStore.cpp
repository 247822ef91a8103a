#include "platform/linux/PosixFileStore.h"

#include "platform/linux/TemporaryFile.h"
#include "platform/linux/UniqueFd.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace ondrel::platform {

namespace {

std::unexpected<FileError> failure(const char* what, const std::string& path, int error) {
  return std::unexpected(FileError{error == ENOENT || error == ENOTDIR,
                                   fmt::format("{} {}: {}", what, path, std::strerror(error))});
}

struct SplitPath {
  std::string folder;
  std::string name;
};

SplitPath split(const std::string& path) {
  const auto slash = path.rfind('/');
  if (slash == std::string::npos)
    return {".", path};
  return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

// 0, or the error number.
int makeFolders(const std::string& folder) {
  if (mkdir(folder.c_str(), 0700) == 0)
    return 0;
  if (errno == ENOENT) {
    const auto parent = split(folder).folder;
    if (parent == folder)
      return ENOENT;
    if (const int error = makeFolders(parent))
      return error;
    if (mkdir(folder.c_str(), 0700) == 0)
      return 0;
  }
  // What is no folder is found out when it is opened as one.
  return errno == EEXIST ? 0 : errno;
}

// Where a path leads when its last part is a link, which may point to nothing.
std::expected<std::string, int> followed(std::string path) {
  constexpr int mostLinks = 40; // the kernel's own limit
  for (int i = 0; i < mostLinks; ++i) {
    std::error_code error;
    const auto target = std::filesystem::read_symlink(path, error);
    if (error)
      return path;
    path = std::filesystem::path(path).parent_path() / target;
  }
  return std::unexpected(ELOOP);
}

int flushFolder(int folder) {
  if (fsync(folder) == 0)
    return 0;
  // Some file systems have nothing to flush for a folder and say so.
  return errno == EINVAL || errno == ENOTSUP || errno == EROFS ? 0 : errno;
}

} // namespace

std::expected<std::string, FileError> PosixFileStore::read(const std::string& path) {
  // Non-blocking, so that a pipe in the file's place can't hang the program.
  const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
  if (!file)
    return failure("can't open", path, errno);
  struct stat status{};
  if (fstat(file.get(), &status) != 0)
    return failure("can't look at", path, errno);
  if (!S_ISREG(status.st_mode))
    return std::unexpected(FileError{false, fmt::format("{} is not a regular file", path)});

  std::string content;
  std::size_t filled = 0;
  for (;;) {
    const auto expected = static_cast<std::size_t>(status.st_size);
    content.resize(filled < expected ? expected + 1 : filled + 65536);
    const auto got = ::read(file.get(), content.data() + filled, content.size() - filled);
    if (got < 0 && errno == EINTR)
      continue;
    if (got < 0)
      return failure("can't read", path, errno);
    filled += static_cast<std::size_t>(got);
    if (got == 0)
      break;
  }
  content.resize(filled);
  return content;
}

std::expected<void, FileError> PosixFileStore::writeAtomically(const std::string& path,
                                                               std::string_view content) {
  return replace(path, content, std::nullopt);
}

std::expected<void, FileError> PosixFileStore::rewriteShared(const std::string& path,
                                                             std::string_view content) {
  const auto target = followed(path);
  if (!target)
    return failure("can't follow the links of", path, target.error());
  struct stat status{};
  if (stat(target->c_str(), &status) != 0)
    return errno == ENOENT ? writeAtomically(*target, content) : failure("can't look at", path, errno);
  if (!S_ISREG(status.st_mode))
    return std::unexpected(FileError{false, fmt::format("{} is not a regular file", path)});
  if (!(status.st_mode & S_IWUSR))
    return failure("can't write", path, EACCES);
  return replace(*target, content, status.st_mode & 0777);
}

std::expected<void, FileError> PosixFileStore::replace(const std::string& path, std::string_view content,
                                                       std::optional<mode_t> mode) {
  const auto [folderPath, name] = split(path);
  if (const int error = makeFolders(folderPath))
    return failure("can't make the folder", folderPath, error);
  const UniqueFd folder(open(folderPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder)
    return failure("can't open the folder", folderPath, errno);

  if (swept_.insert(path).second)
    TemporaryFile::sweep(folder.get(), name);
  TemporaryFile temporary(folder.get(), name);
  if (const int error = temporary.create())
    return failure("can't make a file beside", path, error);
  if (const int error = mode ? temporary.setMode(*mode) : 0)
    return failure("can't set the mode of the file beside", path, error);
  if (const int error = temporary.writeAndFlush(content))
    return failure("can't write", path, error);
  if (const int error = temporary.moveInto(name))
    return failure("can't replace", path, error);
  if (const int error = flushFolder(folder.get()))
    return failure("can't flush the folder of", path, error);
  return {};
}

std::expected<std::string, FileError> PosixFileStore::keepAside(const std::string& path) {
  std::string place;
  timespec oldest{};
  for (int n = 1; n <= damagedFilesKept; ++n) {
    const auto candidate = fmt::format("{}.damaged-{}", path, n);
    struct stat status{};
    if (lstat(candidate.c_str(), &status) != 0) {
      place = candidate;
      break;
    }
    const auto& time = status.st_mtim;
    if (place.empty() || std::pair(time.tv_sec, time.tv_nsec) < std::pair(oldest.tv_sec, oldest.tv_nsec)) {
      place = candidate;
      oldest = time;
    }
  }
  if (std::rename(path.c_str(), place.c_str()) != 0)
    return failure("can't move aside", path, errno);
  return place;
}

bool PosixFileStore::exists(const std::string& path) {
  return access(path.c_str(), F_OK) == 0;
}

std::expected<void, FileError> PosixFileStore::removeRecursively(const std::string& path) {
  std::error_code error;
  std::filesystem::remove_all(path, error);
  if (error)
    return failure("can't remove", path, error.value());
  return {};
}

} // namespace ondrel::platform
