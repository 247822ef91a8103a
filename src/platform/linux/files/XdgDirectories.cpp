#include "platform/linux/files/XdgDirectories.h"

#include <glib.h>

namespace ondrel::platform::files {

namespace {

constexpr const char* ownFolder = "/ondrel";

std::optional<std::string> userFolder(GUserDirectory which) {
  const char* path = g_get_user_special_dir(which);
  if (!path || !g_path_is_absolute(path))
    return std::nullopt;
  return path;
}

std::string absoluteOr(const char* path, const std::string& fallback) {
  return path && g_path_is_absolute(path) ? std::string(path) : fallback;
}

} // namespace

std::optional<std::string> XdgDirectories::applicationSupport() const {
  return absoluteOr(g_get_user_data_dir(), home() + "/.local/share") + ownFolder;
}

std::optional<std::string> XdgDirectories::documents() const {
  return userFolder(G_USER_DIRECTORY_DOCUMENTS);
}

std::optional<std::string> XdgDirectories::downloads() const {
  return userFolder(G_USER_DIRECTORY_DOWNLOAD).value_or(home() + "/Downloads");
}

std::string XdgDirectories::temporary() const {
  return absoluteOr(g_get_tmp_dir(), "/tmp");
}

std::string XdgDirectories::home() const {
  return absoluteOr(g_get_home_dir(), "/");
}

std::string XdgDirectories::configuration() const {
  return absoluteOr(g_get_user_config_dir(), home() + "/.config") + ownFolder;
}

std::string XdgDirectories::autostart() const {
  return absoluteOr(g_get_user_config_dir(), home() + "/.config") + "/autostart";
}

std::string XdgDirectories::cache() const {
  return absoluteOr(g_get_user_cache_dir(), home() + "/.cache") + ownFolder;
}

} // namespace ondrel::platform::files
