#pragma once

#include "platform/linux/files/UniqueFd.h"

#include <string>
#include <string_view>
#include <sys/types.h>

namespace ondrel::platform::files {

// The file beside another one in which its new content is written. Gone with this object unless it was moved
// into place. Locked while it lives, which is how sweep() tells a crash's left-over from a save that is under
// way in another process. All operations give 0 or the error number.
class TemporaryFile {
 public:
  // `folder` is borrowed.
  TemporaryFile(int folder, std::string_view target) : folder_(folder), prefix_(prefixFor(target)) {}
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  int create();
  int writeAndFlush(std::string_view content);
  int setMode(mode_t mode); // 0600 until then
  int moveInto(const std::string& target);

  // Removes the left-overs for that target; what can't be removed stays.
  static void sweep(int folder, std::string_view target);

 private:
  static std::string prefixFor(std::string_view target);

  int folder_;
  std::string prefix_;
  std::string name_; // empty: not created, or moved
  UniqueFd file_;
};

} // namespace ondrel::platform::files
