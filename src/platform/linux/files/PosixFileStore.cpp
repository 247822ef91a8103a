#include "platform/linux/files/PosixFileStore.h"

#include "base/Translation.h"
#include "platform/linux/files/BackupFile.h"
#include "platform/linux/files/TemporaryFile.h"
#include "platform/linux/files/UniqueFd.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ondrel::platform::files {

namespace {

// With a place for the path and one for the system's reason.
using Sentence = fmt::format_string<const std::string&, const std::string&>;

std::unexpected<FileError> failure(Sentence text, const std::string& path, int error) {
  const std::string reason = std::strerror(error);
  return std::unexpected(FileError{error == ENOENT || error == ENOTDIR, base::trFormat(text, path, reason)});
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

int moveInto(TemporaryFile& temporary, const std::string& name, int) {
  return temporary.moveInto(name);
}

// Keeps the other copies of this program out for a moment. Where there are no locks, or where a copy that was
// stopped holds it, the work goes on without: what has come meanwhile is noticed all the same.
class FolderLock {
 public:
  explicit FolderLock(const std::string& folder)
      : folder_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    for (int attempt = 0; folder_ && attempt < 1000; ++attempt) {
      if (flock(folder_.get(), LOCK_EX | LOCK_NB) == 0 || (errno != EWOULDBLOCK && errno != EINTR))
        return;
      usleep(1000);
    }
  }

 private:
  UniqueFd folder_; // unlocked when it is closed
};

// 0, or the error number.
int takeModeOf(const std::string& path, TemporaryFile& temporary) {
  struct stat status{};
  if (stat(path.c_str(), &status) != 0)
    return errno;
  return temporary.setMode(status.st_mode & 0777);
}

} // namespace

std::expected<std::string, FileError> PosixFileStore::read(const std::string& path) {
  // Non-blocking, so that a pipe in the file's place can't hang the program.
  const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
  if (!file)
    return failure(base::trMark("can't open {0}: {1}"), path, errno);
  struct stat status{};
  if (fstat(file.get(), &status) != 0)
    return failure(base::trMark("can't look at {0}: {1}"), path, errno);
  if (!S_ISREG(status.st_mode))
    return std::unexpected(FileError{false, base::trFormat("{} is not a regular file", path)});

  std::string content;
  std::size_t filled = 0;
  for (;;) {
    const auto expected = static_cast<std::size_t>(status.st_size);
    content.resize(filled < expected ? expected + 1 : filled + 65536);
    const auto got = ::read(file.get(), content.data() + filled, content.size() - filled);
    if (got < 0 && errno == EINTR)
      continue;
    if (got < 0)
      return failure(base::trMark("can't read {0}: {1}"), path, errno);
    filled += static_cast<std::size_t>(got);
    if (got == 0)
      break;
  }
  content.resize(filled);
  return content;
}

std::expected<void, FileError> PosixFileStore::writeAtomically(const std::string& path,
                                                               std::string_view content) {
  return replace(path, content, moveInto);
}

std::expected<void, FileError> PosixFileStore::rewriteShared(const std::string& path,
                                                             std::string_view content) {
  const auto target = followed(path);
  if (!target)
    return failure(base::trMark("can't follow the links of {0}: {1}"), path, target.error());
  struct stat status{};
  if (stat(target->c_str(), &status) != 0)
    return errno == ENOENT ? writeAtomically(*target, content)
                           : failure(base::trMark("can't look at {0}: {1}"), path, errno);
  if (!S_ISREG(status.st_mode))
    return std::unexpected(FileError{false, base::trFormat("{} is not a regular file", path)});
  if (!(status.st_mode & S_IWUSR))
    return failure(base::trMark("can't write {0}: {1}"), path, EACCES);
  return replace(
      *target, content,
      [mode = status.st_mode & 0777](TemporaryFile& temporary, const std::string& name, int folder) {
        const int error = temporary.setMode(mode);
        return error ? error : moveInto(temporary, name, folder);
      });
}

std::expected<std::optional<std::string>, FileError>
PosixFileStore::replaceShared(const std::string& path, const MakeContent& make,
                              std::optional<FileVersion>& known) {
  const auto target = followed(path);
  if (!target)
    return failure(base::trMark("can't follow the links of {0}: {1}"), path, target.error());
  const auto folder = split(*target).folder;
  const bool isLink = *target != path;
  // Where it leads may be a disk that isn't there at the moment.
  if (isLink && !exists(folder))
    return failure(base::trMark("can't open the folder {0}: {1}"), folder, ENOENT);

  constexpr int mostAttempts = 20;
  for (int attempt = 0; attempt < mostAttempts; ++attempt) {
    // From the look at what is there until the new file is in place, no other copy may do the same.
    const FolderLock lock(folder);
    const auto there = fileVersion(*target);
    if (!there && there.error() != ENOENT)
      return failure(base::trMark("can't look at {0}: {1}"), path, there.error());
    std::optional<std::expected<std::string, FileError>> other;
    if (there && *there != known)
      other = read(*target);
    if (other && !*other && other->error().notFound)
      continue;
    const auto content = make(other ? &*other : nullptr);

    bool isOvertaken = false;
    std::optional<std::string> kept;
    const auto move = [&](TemporaryFile& temporary, const std::string& name, int folderFile) {
      if (const int error = isLink && there ? takeModeOf(*target, temporary) : 0)
        return error;
      const auto now = fileVersion(*target);
      isOvertaken = now != there;
      if (isOvertaken)
        return now || now.error() == ENOENT ? 0 : now.error();
      if (content.keepsOther && there) {
        const auto place = BackupFile::link(*target);
        if (!place)
          return place.error();
        kept = *place;
      }
      const int error = moveInto(temporary, name, folderFile);
      if (!error)
        known = version(*target);
      return error;
    };
    if (auto replaced = replace(*target, content.text, move); !replaced)
      return std::unexpected(std::move(replaced.error()));
    if (!isOvertaken)
      return kept;
  }
  return std::unexpected(FileError{false, base::trFormat("{} is being changed by other programs", path)});
}

std::expected<void, FileError> PosixFileStore::replace(const std::string& path, std::string_view content,
                                                       const Move& move) {
  const auto [folderPath, name] = split(path);
  if (const int error = makeFolders(folderPath))
    return failure(base::trMark("can't make the folder {0}: {1}"), folderPath, error);
  const UniqueFd folder(open(folderPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder)
    return failure(base::trMark("can't open the folder {0}: {1}"), folderPath, errno);

  if (swept_.insert(path).second)
    TemporaryFile::sweep(folder.get(), name);
  TemporaryFile temporary(folder.get(), name);
  if (const int error = temporary.create())
    return failure(base::trMark("can't make a file beside {0}: {1}"), path, error);
  if (const int error = temporary.writeAndFlush(content))
    return failure(base::trMark("can't write {0}: {1}"), path, error);
  if (const int error = move(temporary, name, folder.get()))
    return failure(base::trMark("can't replace {0}: {1}"), path, error);
  if (const int error = flushFolder(folder.get()))
    return failure(base::trMark("can't flush the folder of {0}: {1}"), path, error);
  return {};
}

std::vector<std::string> PosixFileStore::keptAside(const std::string& path) {
  auto kept = BackupFile::all(path);
  if (const auto target = followed(path); target && *target != path)
    std::ranges::move(BackupFile::all(*target), std::back_inserter(kept));
  return kept;
}

std::optional<FileVersion> PosixFileStore::version(const std::string& path) {
  const auto found = fileVersion(path);
  return found ? std::optional(*found) : std::nullopt;
}

bool PosixFileStore::exists(const std::string& path) {
  return access(path.c_str(), F_OK) == 0;
}

std::expected<void, FileError> PosixFileStore::removeRecursively(const std::string& path) {
  std::error_code error;
  std::filesystem::remove_all(path, error);
  if (error)
    return failure(base::trMark("can't remove {0}: {1}"), path, error.value());
  return {};
}

} // namespace ondrel::platform::files
