#pragma once

#include "platform/FileReader.h"

namespace ondrel::platform::files {

// Reads on GIO's threads.
class GioFileReader final : public FileReader {
 public:
  async::Task<std::expected<std::string, FileError>> read(std::string path, std::uint64_t limit) override;
};

} // namespace ondrel::platform::files
