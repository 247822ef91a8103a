#include "platform/linux/desktop/Rendering.h"

#include "base/Log.h"
#include "platform/linux/files/UniqueFd.h"

#include <glib.h>

#include <fcntl.h>
#include <filesystem>
#include <string>
#include <string_view>
#include <unistd.h>

namespace ondrel::platform::desktop {

namespace {

constexpr base::Logger logger("system");

// By the name of its driver in the kernel; those two draw nothing.
bool isGpu(const std::string& name) {
  std::error_code error;
  const auto driver =
      std::filesystem::read_symlink("/sys/class/drm/" + name + "/device/driver", error).filename().string();
  return driver != "vgem" && driver != "vkms";
}

std::vector<std::string> variablesSet;

void setUnlessSet(const char* name, const char* value) {
  if (g_getenv(name))
    return;
  g_setenv(name, value, TRUE);
  variablesSet.emplace_back(name);
}

} // namespace

const std::vector<std::string>& renderingVariables() {
  return variablesSet;
}

bool hasRenderDevice() {
  // The driver of one maker may be without a render node and works with GL all the same.
  if (access("/dev/nvidiactl", R_OK | W_OK) == 0)
    return true;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/dev/dri", error)) {
    const auto name = entry.path().filename().string();
    if (!name.starts_with("renderD") || !isGpu(name))
      continue;
    if (const files::UniqueFd device(open(entry.path().c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK)); device)
      return true;
  }
  return false;
}

Rendering chooseRendering() {
  const std::string_view wanted = g_getenv("ONDREL_RENDERING") ? g_getenv("ONDREL_RENDERING") : "";
  const bool software = wanted == "software" || (wanted != "hardware" && !hasRenderDevice());
  if (!software)
    return Rendering::hardware;
  setUnlessSet("GSK_RENDERER", "cairo");
  setUnlessSet("WEBKIT_DISABLE_DMABUF_RENDERER", "1");
  // The toolkit would load a GL in software just to have it: that is half of the memory of an empty window.
  setUnlessSet("GDK_DEBUG", "gl-disable");
  logger.info("Drawing without a GPU");
  return Rendering::software;
}

} // namespace ondrel::platform::desktop
