#include "platform/linux/text/ResourceText.h"

#include <gio/gio.h>

#include <memory>

namespace ondrel::platform::text {

std::optional<std::string> resourceText(const std::string& path) {
  const std::unique_ptr<GBytes, decltype(&g_bytes_unref)> bytes(
      g_resources_lookup_data(path.c_str(), G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr), g_bytes_unref);
  if (!bytes)
    return std::nullopt;
  gsize size = 0;
  const auto* text = static_cast<const char*>(g_bytes_get_data(bytes.get(), &size));
  return std::string(text, size);
}

} // namespace ondrel::platform::text
