#pragma once

#include "async/Task.h"
#include "platform/FileStore.h"

#include <expected>
#include <string>

namespace ondrel::platform {

// Writes whole files of any size for the user, without holding up the program.
class FileWriter {
 public:
  virtual ~FileWriter() = default;
  // As FileStore::writeAtomically. A write that has begun goes on when nobody waits for it any more.
  virtual async::Task<std::expected<void, FileError>> writeAtomically(std::string path,
                                                                      std::string content) = 0;
};

} // namespace ondrel::platform
