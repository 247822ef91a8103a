#pragma once

#include "async/Task.h"
#include "base/Event.h"
#include "platform/FileStore.h"

#include <expected>
#include <functional>
#include <string>
#include <vector>

namespace ondrel::platform {

// Folders that the user fills, which may be large, on slow media, or not there. Main thread only.
class UserFolders {
 public:
  virtual ~UserFolders() = default;
  // Of all that is in it, in no order, without holding up the program.
  virtual async::Task<std::expected<std::vector<std::string>, FileError>> names(std::string path) = 0;
  // Calls back after something in the folder, or the folder itself, has come, gone or got another name, until
  // the subscription goes.
  virtual base::Subscription watch(const std::string& path, std::function<void()> changed) = 0;
};

} // namespace ondrel::platform
