#pragma once

#include "async/EventLoop.h"
#include "async/Scope.h"
#include "async/Signal.h"
#include "base/Event.h"
#include "base/Observable.h"
#include "integrations/Announcement.h"

#include <functional>
#include <optional>
#include <string>

namespace ondrel::platform {
class Application;
class HttpClient;
class NetworkMonitor;
class UriLauncher;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::integrations {

// Looks now and then whether the project has something to tell its users. Without a feed in site.json it asks
// nobody. Main thread only.
class AnnouncementService {
 public:
  // All outlive it.
  struct Services {
    platform::HttpClient& http;
    platform::NetworkMonitor& network;
    platform::Application& application;
    platform::UriLauncher& uriLauncher;
    settings::AppSettings& settings;
    std::string appVersion;
  };
  explicit AnnouncementService(Services services);

  // Checks now, after each interval, and whenever the program becomes the active one; in the place of an
  // earlier start. Where there is no network it waits for one.
  void start(async::Duration interval);

  // What is to be shown at present.
  base::Observable<std::optional<Announcement>> visible;
  // Called for a critical one that has not been visible. Set before the start.
  std::function<void()> bringToFront;

  // The user has read it. A critical one comes back with the next check.
  void dismiss();
  // In the browser.
  void openLink();

 private:
  async::Task<void> poll(async::Duration interval);
  async::Task<void> checkWhenDue();
  async::Task<std::optional<Announcement>> fetch();
  bool applies(const Announcement& announcement) const;
  void take(std::optional<Announcement> announcement);
  bool hasWay() const;

  const Services services_;
  // One check at a time, so that no late answer takes the place of a newer one.
  async::Signal due_;
  bool isMissed_ = false; // for want of a network
  async::TaskHandle pollTask_;
  async::TaskHandle checkTask_;
  base::Subscription foreground_;
  base::Subscription network_;
  base::Subscription dismissed_; // by whoever else writes the settings
  async::Scope scope_;
};

} // namespace ondrel::integrations
