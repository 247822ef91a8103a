#pragma once

#include "async/Task.h"
#include "platform/FileStore.h"

#include <cstdint>
#include <expected>
#include <string>

namespace ondrel::platform {

// Reads whole files that the user has chosen, which may be large and on slow media, without holding up the
// program.
class FileReader {
 public:
  virtual ~FileReader() = default;
  // Links are followed. What is no regular file, or longer than `limit` bytes, is an error.
  virtual async::Task<std::expected<std::string, FileError>> read(std::string path, std::uint64_t limit) = 0;
};

} // namespace ondrel::platform
