#pragma once

#include "platform/NewFile.h"

namespace ondrel::platform::files {

// Writes on GIO's threads, by way of a PendingFile. New files are readable by the user alone.
class GioNewFiles final : public NewFiles {
 public:
  async::Task<std::expected<std::unique_ptr<NewFile>, std::string>> create(std::string path,
                                                                           Existing existing) override;
};

} // namespace ondrel::platform::files
