#include "integrations/UpdateManager.h"

#include "async/sleep.h"
#include "base/Log.h"
#include "base/Translation.h"
#include "integrations/UpdateTexts.h"
#include "jmap/newmail/NotificationManager.h"
#include "platform/TextFormatting.h"
#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"

#include <utility>

namespace ondrel::integrations {

namespace {

using platform::UpdateSource;

constexpr base::Logger logger("system");
constexpr const char* category = "update";

constexpr std::chrono::hours retryDelay{1};
// Services come with other programs, not by themselves.
constexpr std::chrono::hours serviceDelay{24};

} // namespace

UpdateManager::UpdateManager(Services services)
    : services_(std::move(services)),
      schedule_(services_.settings, services_.clock, [this] { checkByItself(); }),
      settingChanges_(services_.settings.defaults().changed.subscribe([this](const std::string& key) {
        if (key == settings::keys::automaticallyDownloadsUpdates.name &&
            services_.settings.get(settings::keys::automaticallyDownloadsUpdates))
          download();
      })) {
  services_.notifications.registerCategory({category, {}});
  services_.notifications.setResponseHandler(
      category, [this](const platform::NotificationResponse&) { services_.showUpdates(); });
}

std::string UpdateManager::lastUpdateCheckText() const {
  const auto last = lastUpdateCheckDate();
  // TRANSLATORS: when updates were looked for the last time
  return last ? services_.formatting.mediumDateShortTime(*last) : base::tr("Never");
}

void UpdateManager::lookAround() {
  if (work_.done())
    noticeReplacement();
  if (asking_.done())
    asking_ = scope_.spawn(findSource());
}

async::Task<void> UpdateManager::findSource() {
  const auto found = co_await services_.updater.source();
  source.set(found);
}

// Somebody else may have installed another version.
bool UpdateManager::noticeReplacement() {
  if (!isIn(Phase::needsRestart) && services_.updater.isReplaced())
    state.set({.phase = Phase::needsRestart});
  return isIn(Phase::needsRestart);
}

void UpdateManager::checkForUpdates() {
  userWaits_ = true;
  if (work_.done() && !noticeReplacement())
    work_ = scope_.spawn(check(*state));
}

void UpdateManager::checkByItself() {
  if (!work_.done() || noticeReplacement()) {
    schedule_.postpone(retryDelay);
    return;
  }
  userWaits_ = false;
  work_ = scope_.spawn(check(*state));
}

async::Task<void> UpdateManager::check(UpdateState before) {
  state.set({.phase = Phase::checking, .update = before.update});
  const auto who = co_await services_.updater.source();
  bool isCalledOff = co_await async::cancelled();
  if (isCalledOff) { // before anybody could answer
    didCallOff(std::move(before));
    co_return;
  }
  source.set(who);
  if (who != UpdateSource::packageService) {
    state.set({});
    schedule_.postpone(serviceDelay);
    co_return;
  }
  auto found = co_await find();
  isCalledOff = co_await async::cancelled();
  if (isCalledOff) {
    didCallOff(std::move(before));
    co_return;
  }
  if (!found) {
    didFail(found.error(), std::move(before));
    co_return;
  }
  schedule_.didCheck();
  if (!*found) {
    state.set({.phase = Phase::upToDate});
    co_return;
  }
  const bool wasReady = before.phase == Phase::ready && before.update.identifier == (*found)->identifier;
  co_await didFind(std::move(**found), wasReady);
}

// The user may come to wait for a check that has begun by itself, which could ask for nothing.
async::Task<platform::SoftwareUpdater::Found> UpdateManager::find() {
  while (true) {
    const bool mayAsk = userWaits_;
    auto found = co_await services_.updater.find(mayAsk);
    const bool isCalledOff = co_await async::cancelled();
    if (found || isCalledOff || mayAsk == userWaits_)
      co_return found;
  }
}

void UpdateManager::didCallOff(UpdateState before) {
  state.set(std::move(before));
  schedule_.postpone(retryDelay);
}

void UpdateManager::didFail(const platform::UpdateFault& fault, UpdateState before) {
  logger.notice("Updates can't be looked for: {}", fault.details);
  if (userWaits_) {
    before.problem = updateProblem(fault, UpdateAttempt::looking);
    // What has been found before is still there to be had.
    if (before.phase != Phase::available && before.phase != Phase::ready)
      before = {.phase = Phase::failed, .problem = std::move(before.problem)};
  }
  state.set(std::move(before));
  schedule_.postpone(retryDelay);
}

async::Task<void> UpdateManager::didFind(platform::SoftwareUpdate update, bool wasReady) {
  state.set({.phase = wasReady ? Phase::ready : Phase::available, .update = update});
  if (!wasReady && services_.settings.get(settings::keys::automaticallyDownloadsUpdates))
    co_await load(update);
  if (!userWaits_)
    co_await tell();
}

async::Task<void> UpdateManager::tell() {
  const auto& update = state->update;
  if (update.identifier.empty() || toldOf_ == update.identifier)
    co_return;
  toldOf_ = update.identifier;
  const auto next = services_.programInfo.displayName + " " + update.version;
  auto title = isIn(Phase::ready) ? base::trFormat("{} is ready to be installed", next)
                                  : base::trFormat("{} is available", next);
  co_await services_.notifications.send(std::move(title), base::tr("The settings tell what is new."),
                                        category, {});
}

void UpdateManager::download() {
  if (isIn(Phase::available) && work_.done())
    work_ = scope_.spawn(load(state->update));
}

async::Task<void> UpdateManager::load(platform::SoftwareUpdate update) {
  state.set({.phase = Phase::downloading, .update = update});
  const auto done =
      co_await services_.updater.download(update, [this](const auto& progress) { showProgress(progress); });
  const bool isCalledOff = co_await async::cancelled();
  UpdateState next{.phase = done ? Phase::ready : Phase::available, .update = std::move(update)};
  if (!done && !isCalledOff) {
    logger.notice("The update can't be downloaded: {}", done.error().details);
    next.problem = updateProblem(done.error(), UpdateAttempt::downloading);
  }
  state.set(std::move(next));
}

void UpdateManager::install() {
  if (isIn(Phase::ready) && work_.done())
    work_ = scope_.spawn(put(state->update));
}

async::Task<void> UpdateManager::put(platform::SoftwareUpdate update) {
  state.set({.phase = Phase::installing, .update = update});
  const auto done =
      co_await services_.updater.install(update, [this](const auto& progress) { showProgress(progress); });
  // Half an installation may have replaced the program too.
  if (done || services_.updater.isReplaced()) {
    state.set({.phase = Phase::needsRestart, .update = std::move(update)});
    co_return;
  }
  logger.notice("The update can't be installed: {}", done.error().details);
  const bool isGone = done.error().kind == platform::UpdateFault::Kind::gone;
  state.set({.phase = isGone ? Phase::failed : Phase::ready,
             .update = std::move(update),
             .problem = updateProblem(done.error(), UpdateAttempt::installing)});
}

void UpdateManager::showProgress(const platform::UpdateProgress& progress) {
  auto next = *state;
  next.progress = progress;
  state.set(std::move(next));
}

void UpdateManager::restart() {
  if (isIn(Phase::needsRestart))
    services_.restart();
}

void UpdateManager::cancel() {
  if (isIn(Phase::checking) || isIn(Phase::downloading))
    work_.cancel();
}

} // namespace ondrel::integrations
