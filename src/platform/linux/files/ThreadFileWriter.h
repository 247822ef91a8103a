#pragma once

#include "platform/FileWriter.h"

namespace ondrel::platform::files {

// Writes on GIO's threads.
class ThreadFileWriter final : public FileWriter {
 public:
  async::Task<std::expected<void, FileError>> writeAtomically(std::string path, std::string content) override;
};

} // namespace ondrel::platform::files
