#include "platform/linux/desktop/UrlFiles.h"

#include <initializer_list>

namespace ondrel::platform::desktop {

namespace {

// The local file system keeps the text of what is no local file.
GFile* plainFile(GVfs*, const char* url, gpointer) {
  return g_vfs_get_file_for_uri(g_vfs_get_local(), url);
}

// Asked for every name that is parsed, each path among them that a user types in a file panel. GLib doesn't
// look whether there is one.
GFile* nameOfOthers(GVfs*, const char*, gpointer) {
  return nullptr;
}

} // namespace

void keepUrlTexts() {
  auto* present = g_vfs_get_default();
  if (present == g_vfs_get_local())
    return;
  for (const char* scheme : {"mailto", "email"})
    g_vfs_register_uri_scheme(present, scheme, plainFile, nullptr, nullptr, nameOfOthers, nullptr, nullptr);
}

} // namespace ondrel::platform::desktop
