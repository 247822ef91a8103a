#include "platform/linux/webkit/WebKitSandbox.h"

#include "base/Log.h"
#include "platform/linux/glib/Ref.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace ondrel::platform::webkit {

namespace {

constexpr base::Logger logger("system");
constexpr const char* disablingVariable = "WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS";
constexpr std::array<unsigned long, 4> pauses = {50'000, 100'000, 150'000, 200'000}; // microseconds

struct Attempt {
  enum class Outcome { works, cannot, unclear };
  Outcome outcome = Outcome::unclear;
  std::string reason;
};
using Outcome = Attempt::Outcome;

bool isMissing(const glib::Error& error) {
  return error.matches(G_SPAWN_ERROR, G_SPAWN_ERROR_NOENT) ||
         error.matches(G_SPAWN_ERROR, G_SPAWN_ERROR_ACCES);
}

// Its limit of namespaces: none are allowed, or none is left at the moment.
bool allowsNoNamespaces() {
  char* text = nullptr;
  g_file_get_contents("/proc/sys/user/max_user_namespaces", &text, nullptr, nullptr);
  const glib::CString limit(text);
  return limit && g_ascii_strtoull(limit.get(), nullptr, 10) == 0;
}

// What bubblewrap says where the machine's settings are against it. It speaks English, whatever the locale.
bool tellsOfRefusal(std::string_view said) {
  constexpr std::array<std::string_view, 6> refusals = {"No permissions to create new namespace",
                                                        "does not support",
                                                        "Operation not permitted",
                                                        "Permission denied",
                                                        "Invalid argument",
                                                        "Function not implemented"};
  return std::ranges::any_of(refusals, [said](std::string_view text) { return said.contains(text); }) ||
         (said.contains("ENOSPC") && allowsNoNamespaces());
}

// With the namespaces that the engine asks for.
Attempt runBubblewrap() {
  std::array<const char*, 10> command = {"bwrap", "--ro-bind",     "/",    "/",    "--unshare-pid", "--proc",
                                         "/proc", "--unshare-uts", "true", nullptr};
  constexpr auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL);
  glib::Error error;
  char* said = nullptr;
  int status = 0;
  if (!g_spawn_sync(nullptr, const_cast<char**>(command.data()), nullptr, flags, nullptr, nullptr, nullptr,
                    &said, &status, error.out()))
    return {isMissing(error) ? Outcome::cannot : Outcome::unclear, error.message()};
  const glib::CString owned(said);
  if (g_spawn_check_wait_status(status, error.out()))
    return {Outcome::works, {}};
  const std::string text = said ? said : "";
  // One that a signal ended has said nothing of the machine.
  const bool isRefusal = error.matches(G_SPAWN_EXIT_ERROR, 1) && tellsOfRefusal(text);
  return {isRefusal ? Outcome::cannot : Outcome::unclear, text.empty() ? error.message() : text};
}

} // namespace

bool ensureSandboxOrFallBack() {
  if (g_getenv(disablingVariable)) {
    logger.error("{} is set: web pages run without a sandbox", disablingVariable);
    return false;
  }
  auto last = runBubblewrap();
  int refusals = last.outcome == Outcome::cannot ? 1 : 0;
  for (const auto pause : pauses) {
    if (last.outcome == Outcome::works || refusals == 2)
      break;
    g_usleep(pause);
    last = runBubblewrap();
    refusals += last.outcome == Outcome::cannot ? 1 : 0;
  }
  if (last.outcome == Outcome::works)
    return true;
  if (refusals < 2) {
    logger.error("bubblewrap fails for a reason that may pass, and web pages keep their sandbox: {}",
                 last.reason);
    return true;
  }
  logger.error("bubblewrap can't make a sandbox on this machine, and web pages run without one: {}",
               last.reason);
  g_setenv(disablingVariable, "1", TRUE);
  return false;
}

} // namespace ondrel::platform::webkit
