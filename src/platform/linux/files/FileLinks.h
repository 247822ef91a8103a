#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform::files {

// Symbolic links with harmless names, in a folder of the user's session that goes with this object. The
// engine loses files whose path has a "%" or isn't valid UTF-8 when they are chosen for a page (measured,
// 2.50).
class FileLinks {
 public:
  FileLinks() = default;
  ~FileLinks();
  FileLinks(const FileLinks&) = delete;
  FileLinks& operator=(const FileLinks&) = delete;

  // The link's path. Absent when it can't be made, with a line in the log.
  std::optional<std::string> linkTo(const std::string& path);

 private:
  std::string folder_; // made for the first one
  std::vector<std::string> links_;
};

} // namespace ondrel::platform::files
