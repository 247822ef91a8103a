#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "base/Event.h"
#include "base/Log.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace ondrel::jmap {
class NotificationManager;
}

namespace ondrel::platform {
class Application;
struct NotificationResponse;
class UriLauncher;
class Window;
} // namespace ondrel::platform

namespace ondrel::web {

class DownloadItem;

// Tells the user of files that have come, or have not, while they looked elsewhere: by notifications, whose
// click shows the file in its folder. One for the process, outlives the tabs; main thread only.
class DownloadNotices {
 public:
  // All of them outlive it.
  DownloadNotices(jmap::NotificationManager& notifications, platform::Application& application,
                  platform::UriLauncher& launcher);
  ~DownloadNotices();

  // Keeps the item until it has ended, also without its window. The user sees its end in the window while
  // that has the keyboard, and needs no notification of it.
  void watch(std::shared_ptr<DownloadItem> item, std::weak_ptr<platform::Window> window);

 private:
  struct Watched {
    std::shared_ptr<DownloadItem> item;
    std::weak_ptr<platform::Window> window;
    base::Subscription ended;
  };

  void didEnd(std::uint64_t itemId);
  void respond(const platform::NotificationResponse& response);
  async::Task<void> show(std::string path);

  jmap::NotificationManager& notifications_;
  platform::Application& application_;
  platform::UriLauncher& launcher_;
  const base::Logger logger_{"ui"};
  std::map<std::uint64_t, Watched> watched_; // by the id of the item
  async::Scope scope_;
};

} // namespace ondrel::web
