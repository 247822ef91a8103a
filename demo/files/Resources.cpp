#include "demo/files/Resources.h"

#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

extern "C" GResource* ondrel_demo_get_resource(void);

namespace ondrel::demo::files {

std::optional<std::string> resource(const std::string& path) {
  const auto name = "/org/velmora/Ondrel/demo/" + path;
  const glib::Owned<GBytes> bytes(g_resource_lookup_data(ondrel_demo_get_resource(), name.c_str(),
                                                         G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr));
  if (!bytes)
    return std::nullopt;
  gsize size = 0;
  const auto* data = static_cast<const char*>(g_bytes_get_data(bytes.get(), &size));
  return std::string(data, size);
}

const char* contentTypeOf(std::string_view fileName) {
  if (fileName.ends_with(".js"))
    return "text/javascript; charset=utf-8";
  if (fileName.ends_with(".css"))
    return "text/css; charset=utf-8";
  return fileName.ends_with(".svg") ? "image/svg+xml" : "text/html; charset=utf-8";
}

} // namespace ondrel::demo::files
