#pragma once

#include "platform/FileStore.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ondrel::platform::files {

class TemporaryFile;

// Files by system calls: new files have mode 0600, new folders 0700. A save that a crash cut short leaves a
// temporary file ".<name>.tmp-<six hex digits>" beside the file; the next save of that name removes it.
class PosixFileStore final : public FileStore {
 public:
  std::expected<std::string, FileError> read(const std::string& path) override;
  // An error from flushing the folder is told though the new content is in place by then.
  std::expected<void, FileError> writeAtomically(const std::string& path, std::string_view content) override;
  // Owner, access lists and hard links of the old file are not kept.
  std::expected<void, FileError> rewriteShared(const std::string& path, std::string_view content) override;
  std::expected<std::optional<std::string>, FileError>
  replaceShared(const std::string& path, const MakeContent& make, std::optional<FileVersion>& known) override;
  std::optional<FileVersion> version(const std::string& path) override;
  std::vector<std::string> keptAside(const std::string& path) override;
  bool exists(const std::string& path) override;
  // Links are removed, not followed. What isn't there counts as removed.
  std::expected<void, FileError> removeRecursively(const std::string& path) override;

 private:
  // How a file gets from its place beside the other one into that one's; 0 or the error number.
  using Move = std::function<int(TemporaryFile& temporary, const std::string& name, int folder)>;
  std::expected<void, FileError> replace(const std::string& path, std::string_view content, const Move& move);

  std::set<std::string> swept_; // paths whose left-over temporary files are gone
};

} // namespace ondrel::platform::files
