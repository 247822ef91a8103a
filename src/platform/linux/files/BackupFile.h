#pragma once

#include "platform/FileStore.h"

#include <expected>
#include <string>
#include <vector>

namespace ondrel::platform::files {

// Damaged versions of one file that are kept beside it as "<path>.damaged-<n>", n from 1: a few, the newest
// ones.
class BackupFile {
 public:
  static constexpr int mostKept = 4;

  // The file is there too, and stays where it is; the new path or the error number.
  static std::expected<std::string, int> link(const std::string& path);
  // All that is kept of a file for whatever reason, the newest first.
  static std::vector<std::string> all(const std::string& path);

 private:
  static std::string place(const std::string& path);
};

// Of what links lead to; or the error number.
std::expected<FileVersion, int> fileVersion(const std::string& path);

} // namespace ondrel::platform::files
