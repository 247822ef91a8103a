#pragma once

#include "async/Task.h"

#include <expected>
#include <memory>
#include <string>

namespace ondrel::platform {

// A file that is being written, out of sight until it is whole. Goes with this object unless it was finished.
class NewFile {
 public:
  virtual ~NewFile() = default;
  // Takes the next bytes; waits while the disk is behind. Errors, here and below, are sentences for the user
  // and may be those of earlier bytes.
  virtual async::Task<std::expected<void, std::string>> write(std::string bytes) = 0;
  // Writes what is left and puts the file into its place.
  virtual async::Task<std::expected<void, std::string>> finish() = 0;
};

// Writes files that may be large and on slow media without holding up the program. Main thread only.
class NewFiles {
 public:
  enum class Existing { stays, isReplaced };

  virtual ~NewFiles() = default;
  // At an absolute path, whose folder is made when only that is missing. What exists there stays until the
  // new file is whole, and is then replaced, also if it has come meanwhile, or it is an error.
  virtual async::Task<std::expected<std::unique_ptr<NewFile>, std::string>> create(std::string path,
                                                                                   Existing existing) = 0;
};

} // namespace ondrel::platform
