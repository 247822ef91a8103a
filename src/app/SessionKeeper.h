#pragma once

#include "app/PersistedSession.h"
#include "async/Scope.h"
#include "async/Task.h"

#include <memory>
#include <optional>

namespace ondrel::platform {
class Application;
}

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::web {
class WindowViewModel;
struct WebServices;
} // namespace ondrel::web

namespace ondrel::app {

class BrowserWindows;
class SessionStore;

// Keeps the saved session as the windows are. Main thread only.
class SessionKeeper {
 public:
  // All outlive it.
  SessionKeeper(platform::Application& application, const BrowserWindows& windows, SessionStore& store,
                const web::WebServices& services)
      : application_(application), windows_(windows), store_(store), services_(services) {}

  // What was saved last. Saving begins with this: before it there is nothing to save but the loss of what is
  // on disk.
  std::optional<PersistedSession> load();
  // The session as it is now.
  PersistedSession snapshot() const;
  void save();
  // When the pages have been quiet for two seconds.
  void saveSoon();
  // A last time: what closes from now on closes because the program ends, and belongs to the session.
  void finish();
  bool isFinished() const { return isFinished_; }

  PersistedTab persisted(const web::WindowViewModel& tab) const;
  std::shared_ptr<web::WindowViewModel> restored(const PersistedTab& tab) const;

 private:
  async::Task<void> saveLater();

  platform::Application& application_;
  const BrowserWindows& windows_;
  SessionStore& store_;
  const web::WebServices& services_;
  bool hasLoaded_ = false;
  bool isFinished_ = false;
  async::TaskHandle saving_;
  async::Scope scope_;
};

} // namespace ondrel::app
