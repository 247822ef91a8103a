#pragma once

#include "platform/FileStore.h"

#include <expected>
#include <string>
#include <string_view>
#include <vector>

namespace ondrel::platform::files {

// Versions of one file that are kept beside it as "<path>.<why>-<n>", n from 1: a few for each reason, the
// newest ones.
class BackupFile {
 public:
  static constexpr int mostKept = 4;

  BackupFile(std::string path, std::string_view why) : path_(std::move(path)), why_(why) {}

  // The file goes there; the new path or the error number.
  std::expected<std::string, int> move() const;
  // The file is there too, and stays where it is.
  std::expected<std::string, int> link() const;

  // All that is kept of a file for whatever reason, the newest first.
  static std::vector<std::string> all(const std::string& path);

 private:
  std::string place() const;

  std::string path_;
  std::string why_;
};

// Of what links lead to; or the error number.
std::expected<FileVersion, int> fileVersion(const std::string& path);

} // namespace ondrel::platform::files
