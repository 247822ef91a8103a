#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::platform {

struct FileError {
  bool notFound = false;
  std::string description;
};

// Tells what is in a file from all that is put in its place later.
struct FileVersion {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;
  std::int64_t size = 0;
  std::int64_t modified = 0; // nanoseconds

  bool operator==(const FileVersion&) const = default;
};

// Whole files of the program's own, synchronously. New files are readable by the user alone.
class FileStore {
 public:
  virtual ~FileStore() = default;

  virtual std::expected<std::string, FileError> read(const std::string& path) = 0;
  // Beside, flushed, renamed, folder flushed: afterwards the old or the new content is there, never a
  // mixture. Makes missing folders.
  virtual std::expected<void, FileError> writeAtomically(const std::string& path,
                                                         std::string_view content) = 0;
  // What replaceShared() is to write.
  struct Content {
    std::string text;
    bool keepsOther = false; // what is there is damaged: it is kept beside first
  };
  // Gets what stands in the file's place and isn't what this process has read or saved there last, an error
  // if that can't be read; null if there is no such thing.
  using MakeContent = std::function<Content(const std::expected<std::string, FileError>* other)>;
  // As writeAtomically, for a file that other processes of this program save too: nothing is replaced that
  // `make` hasn't seen, so it may be asked again. `known` tells what was read or saved last, and becomes the
  // new version as soon as that is in place, also where an error follows. Links are followed, and the mode
  // behind them is kept; a folder that is missing there is an error. The path of what was kept beside
  // ("<path>.damaged-<n>"), if there was something.
  virtual std::expected<std::optional<std::string>, FileError>
  replaceShared(const std::string& path, const MakeContent& make, std::optional<FileVersion>& known) = 0;
  // Absent where there is no file, or none that can be looked at.
  virtual std::optional<FileVersion> version(const std::string& path) = 0;
  // As writeAtomically, for a file that is another program's too: links are followed, the file's mode is
  // kept, and a file without write permission is left alone.
  virtual std::expected<void, FileError> rewriteShared(const std::string& path, std::string_view content) = 0;
  // What was kept beside this file in its time, and beside the one that it leads to if it is a link; the
  // newest first.
  virtual std::vector<std::string> keptAside(const std::string& path) = 0;
  virtual bool exists(const std::string& path) = 0;
  virtual std::expected<void, FileError> removeRecursively(const std::string& path) = 0;
};

// Folders of the user's, absolute; absent when the desktop has none.
class Directories {
 public:
  virtual ~Directories() = default;
  virtual std::optional<std::string> applicationSupport() const = 0;
  virtual std::optional<std::string> documents() const = 0;
  virtual std::optional<std::string> downloads() const = 0;
  virtual std::string temporary() const = 0;
  virtual std::string home() const = 0;
};

} // namespace ondrel::platform
