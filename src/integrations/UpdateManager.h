#pragma once

#include "async/Scope.h"
#include "base/Observable.h"
#include "integrations/UpdateSchedule.h"
#include "integrations/UpdateState.h"
#include "platform/ProgramInfo.h"
#include "platform/SoftwareUpdater.h"

#include <functional>
#include <optional>
#include <string>

namespace ondrel::jmap {
class NotificationManager;
}

namespace ondrel::platform {
class TextFormatting;
}

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::integrations {

// Keeps the program up to date by the machine's package service: looks when the user asks and, as the
// settings have it, by itself; installs only when told. Main thread only.
class UpdateManager {
 public:
  // All outlive it.
  struct Services {
    platform::SoftwareUpdater& updater;
    settings::AppSettings& settings;
    jmap::NotificationManager& notifications;
    const platform::TextFormatting& formatting;
    platform::ProgramInfo programInfo;
    WallClock clock;
    std::function<void()> showUpdates; // opens the page of the settings
    std::function<void()> restart;     // ends the program orderly and starts it again
  };
  explicit UpdateManager(Services services);

  base::Observable<UpdateState> state;
  base::Observable<std::optional<platform::UpdateSource>> source; // absent until it has been asked for

  // Begins to look by itself.
  void start() { schedule_.start(); }
  // Finds out who updates the program, for somebody who wants to see it.
  void lookAround();
  // Each of these does nothing in a state that it doesn't follow on.
  void checkForUpdates();
  void download();
  void install();
  void restart();
  void cancel(); // the check or the download

  // Of the last check that came to an answer.
  std::optional<WallTime> lastUpdateCheckDate() const { return schedule_.lastCheck(); }
  // In the user's words, or "Never".
  std::string lastUpdateCheckText() const;
  const platform::ProgramInfo& programInfo() const { return services_.programInfo; }

 private:
  using Phase = UpdateState::Phase;

  bool isIn(Phase phase) const { return state->phase == phase; }
  void checkByItself();
  bool noticeReplacement();
  async::Task<void> findSource();
  async::Task<void> check(UpdateState before);
  async::Task<platform::SoftwareUpdater::Found> find();
  void didCallOff(UpdateState before);
  void didFail(const platform::UpdateFault& fault, UpdateState before);
  async::Task<void> didFind(platform::SoftwareUpdate update, bool wasReady);
  async::Task<void> load(platform::SoftwareUpdate update);
  async::Task<void> put(platform::SoftwareUpdate update);
  void showProgress(const platform::UpdateProgress& progress);
  async::Task<void> tell();

  const Services services_;
  UpdateSchedule schedule_;
  bool userWaits_ = false;   // for the check that is under way
  std::string toldOf_;       // the update of the last notification
  async::TaskHandle asking_; // who updates the program
  async::TaskHandle work_;
  base::Subscription settingChanges_;
  async::Scope scope_;
};

} // namespace ondrel::integrations
