#include "platform/linux/files/FileWatch.h"

#include <filesystem>
#include <utility>

namespace ondrel::platform::files {

FileWatch::FileWatch(const std::string& path, std::function<void()> changed) : changed_(std::move(changed)) {
  file_ = watch(path, [this] {
    followLink();
    changed_();
  });
  followLink();
}

FileWatch::Place FileWatch::watch(std::string path, std::function<void()> changed) {
  const auto file = glib::adopt(g_file_new_for_path(path.c_str()));
  auto monitor = glib::adopt(g_file_monitor_file(file.get(), G_FILE_MONITOR_NONE, nullptr, nullptr));
  glib::Connection connection;
  if (monitor)
    connection = glib::connect<void(GFileMonitor*, GFile*, GFile*, GFileMonitorEvent)>(
        monitor.get(), "changed",
        [changed = std::move(changed)](GFileMonitor*, GFile*, GFile*, GFileMonitorEvent) { changed(); });
  return {std::move(path), std::move(monitor), std::move(connection)};
}

// What is written behind a link makes no event beside it.
void FileWatch::followLink() {
  std::error_code error;
  const bool isLink = std::filesystem::is_symlink(file_.path, error);
  const auto target = isLink ? std::filesystem::weakly_canonical(file_.path, error).string() : std::string();
  if (target == target_.path)
    return;
  target_ = target.empty() ? Place() : watch(target, changed_);
}

} // namespace ondrel::platform::files
