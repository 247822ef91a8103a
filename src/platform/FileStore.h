#pragma once

#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace ondrel::platform {

struct FileError {
  bool notFound = false;
  std::string description;
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
  // The same for a file that is another program's too: links are followed, the file's mode is kept, and a file
  // without write permission is left alone.
  virtual std::expected<void, FileError> rewriteShared(const std::string& path, std::string_view content) = 0;
  // Moves a damaged file out of the way under a free name beside it; the new path.
  virtual std::expected<std::string, FileError> keepAside(const std::string& path) = 0;
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
