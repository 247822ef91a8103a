#include "platform/linux/WebKitSandbox.h"

#include "base/Log.h"
#include "platform/linux/glib/Ref.h"

#include <glib.h>

#include <array>

namespace ondrel::platform {

namespace {

constexpr base::Logger logger("system");
constexpr const char* disablingVariable = "WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS";

// With the namespaces that the engine asks for.
bool bubblewrapWorks() {
  std::array<const char*, 10> command = {"bwrap", "--ro-bind",     "/",    "/",    "--unshare-pid", "--proc",
                                         "/proc", "--unshare-uts", "true", nullptr};
  glib::Error error;
  int status = 0;
  const auto flags =
      static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL);
  return g_spawn_sync(nullptr, const_cast<char**>(command.data()), nullptr, flags, nullptr, nullptr, nullptr,
                      nullptr, &status, error.out()) &&
         g_spawn_check_wait_status(status, nullptr);
}

} // namespace

bool ensureSandboxOrFallBack() {
  if (g_getenv(disablingVariable)) {
    logger.error("{} is set: web pages run without a sandbox", disablingVariable);
    return false;
  }
  if (bubblewrapWorks())
    return true;
  logger.error(
      "bubblewrap can't make a sandbox on this machine (missing, or no user namespaces): web pages run "
      "without one");
  g_setenv(disablingVariable, "1", TRUE);
  return false;
}

} // namespace ondrel::platform
