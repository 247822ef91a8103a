#pragma once

#include "async/Scope.h"
#include "base/Event.h"

#include <functional>
#include <string>
#include <vector>

namespace ondrel::jmap {
class NotificationManager;
}

namespace ondrel::platform {
class Application;
class BackgroundApplications;
class NotificationCenter;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::integrations {

// Tells the user, once, that the program goes on when its last window has been closed, with a way to end it;
// and the desktop, each time. Main thread only.
class BackgroundNotice {
 public:
  // All outlive it.
  struct Services {
    platform::Application& application;
    settings::AppSettings& settings;
    platform::NotificationCenter& notificationCenter;
    jmap::NotificationManager& notifications;
    platform::BackgroundApplications& background;
    std::string displayName;
    std::function<void()> show; // brings a window back
    std::function<void()> quit; // asks what has to be asked
  };
  explicit BackgroundNotice(Services services);

  // The program has started without a window.
  void startedInBackground();

 private:
  async::Task<void> windowClosed();
  async::Task<void> tell();
  bool hasWindow() const;

  const Services services_;
  bool isQuitting_ = false;
  std::vector<base::Subscription> subscriptions_;
  async::Scope scope_;
};

} // namespace ondrel::integrations
