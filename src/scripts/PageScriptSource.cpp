#include "scripts/PageScriptSource.h"

#include <gio/gio.h>

#include <memory>

extern "C" GResource* ondrel_scripts_get_resource();

namespace ondrel::scripts {

std::optional<std::string> pageScriptSource(std::string_view name) {
  const auto path = "/org/velmora/Ondrel/scripts/" + std::string(name) + ".js";
  const std::unique_ptr<GBytes, decltype(&g_bytes_unref)> bytes(
      g_resource_lookup_data(ondrel_scripts_get_resource(), path.c_str(), G_RESOURCE_LOOKUP_FLAGS_NONE,
                             nullptr),
      g_bytes_unref);
  if (!bytes)
    return std::nullopt;
  gsize size = 0;
  const auto* text = static_cast<const char*>(g_bytes_get_data(bytes.get(), &size));
  return std::string(text, size);
}

} // namespace ondrel::scripts
