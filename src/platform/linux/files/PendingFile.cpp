#include "platform/linux/files/PendingFile.h"

#include "base/Text.h"
#include "base/Translation.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace ondrel::platform::files {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view folderName = ".ondrel-";
constexpr std::string_view uniquePart = "XXXXXX";

// With a place for the path and one for the system's reason.
using Sentence = fmt::format_string<const std::string&, const std::string&>;

std::unexpected<std::string> failure(Sentence text, const std::string& path, int error) {
  const std::string reason = std::strerror(error);
  return std::unexpected(base::trFormat(text, path, reason));
}

// Without one errno tells why.
UniqueFd locked(const std::string& folder) {
  UniqueFd lock(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  if (lock && flock(lock.get(), LOCK_EX | LOCK_NB) != 0)
    lock = UniqueFd();
  return lock;
}

void removeFolder(const std::string& folder) {
  std::error_code ignored;
  fs::remove_all(folder, ignored);
}

// What still has its lock is another one's that is being written. Where there are no locks nothing is
// removed.
void sweep(const std::string& parent) {
  std::error_code error;
  for (fs::directory_iterator entry(parent, error), end; !error && entry != end; entry.increment(error)) {
    const auto name = entry->path().filename().string();
    if (name.size() != folderName.size() + uniquePart.size() || !name.starts_with(folderName))
      continue;
    if (const auto lock = locked(entry->path()))
      removeFolder(entry->path());
  }
}

// Between making a folder and locking it, another one's sweep may take it for a left-over.
bool isSwept(const std::string& folder, const UniqueFd& lock) {
  return lock ? access(folder.c_str(), F_OK) != 0 : errno == ENOENT || errno == EWOULDBLOCK;
}

int moveTo(const std::string& from, const std::string& to, bool replacing) {
  if (replacing)
    return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
    return 0;
  if (errno != EINVAL && errno != ENOSYS)
    return errno;
  // Not all file systems can do both at once.
  struct stat status{};
  if (lstat(to.c_str(), &status) == 0)
    return EEXIST;
  return rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

} // namespace

std::expected<PendingFile, std::string> PendingFile::make(const std::string& destination,
                                                          NewFiles::Existing existing) {
  if (!destination.starts_with('/') || destination.contains('\0') || !base::isValidUtf8(destination))
    return std::unexpected(base::tr("The chosen place has no name that can be used."));
  struct stat status{};
  const bool isThere = lstat(destination.c_str(), &status) == 0;
  if (!isThere && errno != ENOENT)
    return failure(base::trMark("Can't use {0}: {1}"), destination, errno);
  const bool canBeReplaced =
      existing == NewFiles::Existing::isReplaced && (S_ISREG(status.st_mode) || S_ISLNK(status.st_mode));
  if (isThere && !canBeReplaced)
    return failure(base::trMark("Can't replace {0}: {1}"), destination,
                   S_ISDIR(status.st_mode) ? EISDIR : EEXIST);

  const auto parent = destination.substr(0, destination.rfind('/') + 1);
  sweep(parent);
  std::string folder;
  UniqueFd lock;
  do {
    folder = fmt::format("{}{}{}", parent, folderName, uniquePart);
    if (!mkdtemp(folder.data()))
      return failure(base::trMark("Can't write into {0}: {1}"), parent, errno);
    lock = locked(folder);
  } while (isSwept(folder, lock));
  constexpr mode_t rights = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
  return PendingFile(destination, isThere ? std::optional(status.st_mode & rights) : std::nullopt,
                     std::move(folder), std::move(lock));
}

PendingFile::PendingFile(std::string destination, std::optional<mode_t> replacedMode, std::string folder,
                         UniqueFd lock)
    : destination_(std::move(destination)), replacedMode_(replacedMode), folder_(std::move(folder)),
      lock_(std::move(lock)) {
}

PendingFile::PendingFile(PendingFile&& other) noexcept
    : destination_(std::move(other.destination_)), replacedMode_(other.replacedMode_),
      folder_(std::exchange(other.folder_, {})), lock_(std::move(other.lock_)) {
}

PendingFile::~PendingFile() {
  if (!folder_.empty())
    removeFolder(folder_);
}

std::expected<void, std::string> PendingFile::moveIntoPlace(bool isAgreed) {
  struct stat status{};
  if (replacedMode_ && lstat(destination_.c_str(), &status) == 0 && S_ISREG(status.st_mode))
    chmod(path().c_str(), *replacedMode_);
  if (const int error = moveTo(path(), destination_, isAgreed || replaces()))
    return failure(base::trMark("Can't put the file into its place {0}: {1}"), destination_, error);
  return {};
}

} // namespace ondrel::platform::files
