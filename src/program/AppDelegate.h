#pragma once

#include "async/Scope.h"
#include "base/Event.h"
#include "base/Log.h"
#include "base/Url.h"
#include "platform/ProgramInfo.h"

#include <functional>
#include <string>
#include <vector>

namespace ondrel::app {
class WindowManager;
}

namespace ondrel::platform {
class Application;
class Directories;
class FileStore;
class UserDefaults;
} // namespace ondrel::platform

namespace ondrel::program {

struct AppLifecycleService;

// Where URL events go. An empty receiver drops the event.
struct URLReceivers {
  std::function<void(const std::string& link)> openEmailLink; // what stands behind "email://"
  std::function<void(const base::Url& url)> handleMailto;
};

// Answers what happens to the application: end of launching, URL events, reopening, loss of the foreground.
class AppDelegate {
 public:
  AppDelegate(platform::Application& application, platform::ProgramInfo programInfo,
              platform::UserDefaults& defaults, platform::Directories& directories,
              platform::FileStore& files, AppLifecycleService& lifecycle);

  // Set as soon as there is one; without it a reopening does nothing.
  void setWindowManager(app::WindowManager* windowManager) { windowManager_ = windowManager; }
  void setReceivers(URLReceivers receivers) { receivers_ = std::move(receivers); }

  void applicationDidFinishLaunching();
  // Always false: the platform has nothing left to do. Work follows on a later turn.
  bool applicationShouldHandleReopen(bool hasVisibleWindows);
  void applicationWillResignActive();
  // Text of any kind and length.
  void handleGetURL(const std::string& text);

 private:
  void refuse(const std::string& text);

  platform::Application& application_;
  const platform::ProgramInfo programInfo_;
  platform::UserDefaults& defaults_;
  platform::Directories& directories_;
  platform::FileStore& files_;
  AppLifecycleService& lifecycle_;
  app::WindowManager* windowManager_ = nullptr;
  URLReceivers receivers_;
  const base::Logger logger_{"network"};
  std::vector<base::Subscription> subscriptions_;
  base::Subscription urlSubscription_;
  async::Scope scope_;
};

} // namespace ondrel::program
