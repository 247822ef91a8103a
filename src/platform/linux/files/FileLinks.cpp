#include "platform/linux/files/FileLinks.h"

#include "base/Log.h"

#include <glib.h>

#include <cerrno>
#include <stdlib.h>
#include <unistd.h>

namespace ondrel::platform::files {

namespace {
constexpr base::Logger logger("system");
}

FileLinks::~FileLinks() {
  for (const auto& link : links_)
    unlink(link.c_str());
  if (!folder_.empty())
    rmdir(folder_.c_str());
}

std::optional<std::string> FileLinks::linkTo(const std::string& path) {
  if (folder_.empty()) {
    auto pattern = std::string(g_get_user_runtime_dir()) + "/ondrel-files-XXXXXX";
    if (!mkdtemp(pattern.data())) {
      logger.error("Files can't be handed to a page: {}", g_strerror(errno));
      return std::nullopt;
    }
    folder_ = std::move(pattern);
  }
  auto link = folder_ + "/" + std::to_string(links_.size());
  if (symlink(path.c_str(), link.c_str()) != 0) {
    logger.error("Files can't be handed to a page: {}", g_strerror(errno));
    return std::nullopt;
  }
  links_.push_back(link);
  return link;
}

} // namespace ondrel::platform::files
