#include "platform/linux/webkit/EngineVersion.h"

#include <fmt/format.h>
#include <webkit/webkit.h>

namespace ondrel::platform::webkit {

std::string engineVersion() {
  return fmt::format("{}.{}.{}", webkit_get_major_version(), webkit_get_minor_version(),
                     webkit_get_micro_version());
}

} // namespace ondrel::platform::webkit
