#pragma once

#include "platform/UserFolders.h"

namespace ondrel::platform::files {

// Lists on GIO's threads, and watches as the file system tells.
class GioUserFolders final : public UserFolders {
 public:
  async::Task<std::expected<std::vector<std::string>, FileError>> names(std::string path) override;
  base::Subscription watch(const std::string& path, std::function<void()> changed) override;
};

} // namespace ondrel::platform::files
