#include "platform/linux/files/MachineFiles.h"

#include "base/Text.h"
#include "platform/linux/files/PosixFileStore.h"
#include "platform/linux/glib/Ref.h"

#include <glib.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <initializer_list>
#include <string_view>

namespace ondrel::platform::files {

namespace {

constexpr double bytesPerGB = 1 << 30;

// The first of the files that can be read and says something.
std::string read(const std::string& root, std::initializer_list<const char*> paths) {
  PosixFileStore files;
  for (const auto* path : paths)
    if (auto text = files.read(root + path); text && !base::trimmed(*text).empty())
      return std::move(*text);
  return {};
}

// What stands behind a name and a separator in the first line that begins with it.
std::string valueIn(std::string_view text, std::string_view name, char separator) {
  while (!text.empty()) {
    const auto line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    const auto at = line.find(separator);
    if (at != line.npos && base::trimmed(line.substr(0, at)) == name)
      return std::string(base::trimmed(line.substr(at + 1)));
  }
  return {};
}

// Values of os-release are quoted as for a shell.
std::string unquoted(const std::string& value) {
  const glib::CString text(g_shell_unquote(value.c_str(), nullptr));
  return text ? text.get() : value;
}

std::string systemVersion(const std::string& root, const utsname& kernel) {
  const auto release = read(root, {"/etc/os-release", "/usr/lib/os-release"});
  const auto name = unquoted(valueIn(release, "PRETTY_NAME", '='));
  const auto running = std::string(kernel.sysname) + " " + kernel.release;
  return name.empty() ? running : name + ", " + running;
}

std::string cpu(const std::string& root, const utsname& kernel) {
  const auto name = valueIn(read(root, {"/proc/cpuinfo"}), "model name", ':');
  return name.empty() ? kernel.machine : name;
}

// Device trees end their texts with a zero.
std::string model(const std::string& root) {
  const auto text = read(root, {"/sys/class/dmi/id/product_name", "/proc/device-tree/model"});
  return std::string(base::trimmed(text.c_str()));
}

// Sleep counts: the machine has not been started anew.
std::chrono::sys_seconds bootTime() {
  timespec up{};
  clock_gettime(CLOCK_BOOTTIME, &up);
  return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()) -
         std::chrono::seconds(up.tv_sec);
}

} // namespace

MachineInfo machineInfo(const std::string& root) {
  utsname kernel{};
  uname(&kernel);
  return {.systemVersion = systemVersion(root, kernel),
          .cpu = cpu(root, kernel),
          .modelIdentifier = model(root),
          .cpuCount = static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN)),
          .memoryGB = static_cast<double>(sysconf(_SC_PHYS_PAGES)) *
                      static_cast<double>(sysconf(_SC_PAGESIZE)) / bytesPerGB,
          .bootTime = bootTime(),
          .isSandboxed = access((root + "/.flatpak-info").c_str(), F_OK) == 0 || std::getenv("SNAP")};
}

} // namespace ondrel::platform::files
