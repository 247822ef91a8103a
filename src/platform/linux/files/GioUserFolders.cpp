#include "platform/linux/files/GioUserFolders.h"

#include "platform/linux/glib/AsyncResult.h"
#include "platform/linux/glib/Connection.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

namespace ondrel::platform::files {

namespace {

using glib::adopt;
using glib::Ref;

constexpr int namesAtOnce = 100;

template <class T>
using Outcome = std::expected<T, FileError>;
using Names = std::vector<std::string>;

std::unexpected<FileError> failure(const std::string& path, const glib::Error& error) {
  return std::unexpected(FileError{error.matches(G_IO_ERROR, G_IO_ERROR_NOT_FOUND),
                                   fmt::format("can't list {}: {}", path, error.message())});
}

std::unexpected<FileError> cancelled(const std::string& path) {
  return std::unexpected(FileError{false, fmt::format("can't list {}: cancelled", path)});
}

async::Task<Outcome<Ref<GFileEnumerator>>> openFolder(std::string path) {
  const auto folder = adopt(g_file_new_for_path(path.c_str()));
  auto [pending, result] = glib::startAsync();
  g_file_enumerate_children_async(folder.get(), G_FILE_ATTRIBUTE_STANDARD_NAME, G_FILE_QUERY_INFO_NONE,
                                  G_PRIORITY_DEFAULT, pending.cancellable, glib::PendingCall::callback,
                                  pending.userData);
  const auto finished = co_await std::move(result);
  if (!finished)
    co_return cancelled(path);
  glib::Error error;
  auto opened = adopt(g_file_enumerate_children_finish(folder.get(), finished->get(), error.out()));
  if (!opened)
    co_return failure(path, error);
  co_return std::move(opened);
}

// Empty at the end.
async::Task<Outcome<Names>> someNames(Ref<GFileEnumerator> folder, std::string path) {
  auto [pending, result] = glib::startAsync();
  g_file_enumerator_next_files_async(folder.get(), namesAtOnce, G_PRIORITY_DEFAULT, pending.cancellable,
                                     glib::PendingCall::callback, pending.userData);
  const auto finished = co_await std::move(result);
  if (!finished)
    co_return cancelled(path);
  glib::Error error;
  auto* files = g_file_enumerator_next_files_finish(folder.get(), finished->get(), error.out());
  if (error)
    co_return failure(path, error);
  Names names;
  for (const auto* file = files; file; file = file->next)
    names.emplace_back(g_file_info_get_name(G_FILE_INFO(file->data)));
  g_list_free_full(files, g_object_unref);
  co_return names;
}

// The folder itself is seen from the one that it is in. What is in it is watched only while it is there: what
// watches a missing folder would look for it again and again.
class Watch {
 public:
  Watch(const std::string& path, std::function<void()> changed)
      : folder_(adopt(g_file_new_for_path(path.c_str()))), changed_(std::move(changed)),
        self_(adopt(g_file_monitor_file(folder_.get(), G_FILE_MONITOR_NONE, nullptr, nullptr))) {
    selfChanged_ = follow(self_.get(), [this] { watchContent(); });
    watchContent();
  }

 private:
  // Calls `before` and then back.
  glib::Connection follow(GFileMonitor* monitor, std::function<void()> before) {
    if (!monitor)
      return {};
    return glib::connect<void(GFileMonitor*, GFile*, GFile*, GFileMonitorEvent)>(
        monitor, "changed",
        [this, before = std::move(before)](GFileMonitor*, GFile*, GFile*, GFileMonitorEvent event) {
          if (event != G_FILE_MONITOR_EVENT_CREATED && event != G_FILE_MONITOR_EVENT_DELETED)
            return;
          before();
          const auto callBack = changed_; // which may end this watch
          callBack();
        });
  }

  void watchContent() {
    contentChanged_ = {};
    const bool isThere = g_file_query_exists(folder_.get(), nullptr) != FALSE;
    content_ = isThere ? adopt(g_file_monitor_directory(folder_.get(), G_FILE_MONITOR_NONE, nullptr, nullptr))
                       : nullptr;
    contentChanged_ = follow(content_.get(), [] {});
  }

  const Ref<GFile> folder_;
  const std::function<void()> changed_;
  const Ref<GFileMonitor> self_;
  Ref<GFileMonitor> content_;
  glib::Connection selfChanged_;
  glib::Connection contentChanged_;
};

} // namespace

async::Task<std::expected<std::vector<std::string>, FileError>> GioUserFolders::names(std::string path) {
  const auto folder = co_await openFolder(path);
  if (!folder)
    co_return std::unexpected(folder.error());
  Names all;
  for (;;) {
    auto some = co_await someNames(*folder, path);
    if (!some)
      co_return std::unexpected(some.error());
    if (some->empty())
      co_return std::move(all);
    std::ranges::move(*some, std::back_inserter(all));
  }
}

base::Subscription GioUserFolders::watch(const std::string& path, std::function<void()> changed) {
  return base::Subscription([watch = std::make_shared<Watch>(path, std::move(changed))] {});
}

} // namespace ondrel::platform::files
