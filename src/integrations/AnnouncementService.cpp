#include "integrations/AnnouncementService.h"

#include "async/Deadline.h"
#include "async/sleep.h"
#include "base/Log.h"
#include "base/LoopbackHost.h"
#include "platform/Application.h"
#include "platform/HttpClient.h"
#include "platform/NetworkMonitor.h"
#include "platform/UriLauncher.h"
#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"

#include <utility>

namespace ondrel::integrations {

namespace {

constexpr base::Logger logger("network");

constexpr std::size_t largestFeed = std::size_t{64} << 10;
constexpr int statusOK = 200;
// The client's own limit counts from byte to byte.
constexpr std::chrono::seconds longestFetch{120};

void logFailure(const std::string& description) {
  logger.error("Announcement fetch failed: {}", description);
}

} // namespace

AnnouncementService::AnnouncementService(Services services) : services_(std::move(services)) {
}

void AnnouncementService::start(async::Duration interval) {
  pollTask_.cancel();
  checkTask_.cancel();
  if (services_.settings.site().announcementFeedURL.empty())
    return;
  checkTask_ = scope_.spawn(checkWhenDue());
  pollTask_ = scope_.spawn(poll(interval));
  foreground_ = services_.application.activated.subscribe([this] { due_.send(); });
  dismissed_ = services_.settings.defaults().changed.subscribe([this](const std::string& key) {
    if (key == settings::keys::dismissedAnnouncementID && *visible && !applies(**visible))
      visible.set(std::nullopt);
  });
  network_ = services_.network.isAvailable.observe([this] {
    if (hasWay() && std::exchange(isMissed_, false))
      due_.send();
  });
}

async::Task<void> AnnouncementService::poll(async::Duration interval) {
  bool goesOn = true;
  while (goesOn) {
    due_.send();
    goesOn = co_await async::sleep(interval);
  }
}

async::Task<void> AnnouncementService::checkWhenDue() {
  for (;;) {
    const bool isDue = co_await due_.wait();
    if (!isDue)
      co_return;
    isMissed_ = !hasWay();
    if (isMissed_)
      continue;
    auto announcement = co_await fetch();
    if (co_await async::cancelled())
      co_return;
    take(std::move(announcement));
  }
}

// To this machine there is always one.
bool AnnouncementService::hasWay() const {
  const auto url = base::Url::parse(services_.settings.site().announcementFeedURL);
  return *services_.network.isAvailable || (url && url->host() && base::isLoopbackHost(*url->host()));
}

async::Task<std::optional<Announcement>> AnnouncementService::fetch() {
  const auto response = co_await async::withDeadline(
      longestFetch, services_.http.send({.url = services_.settings.site().announcementFeedURL,
                                         .largestBody = largestFeed,
                                         .staysAtOrigin = true}));
  if (co_await async::cancelled())
    co_return std::nullopt;
  if (!response || !*response) {
    logFailure(response ? response->error().description : "The request timed out.");
    co_return std::nullopt;
  }
  if ((*response)->status != statusOK)
    co_return std::nullopt;
  auto announcement = Announcement::decode((*response)->body);
  if (!announcement) {
    logFailure(announcement.error());
    co_return std::nullopt;
  }
  co_return std::move(*announcement);
}

bool AnnouncementService::applies(const Announcement& announcement) const {
  const auto now = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
  if (announcement.isExpired(now) || !announcement.isFor(services_.appVersion))
    return false;
  return announcement.severity == Announcement::Severity::critical ||
         services_.settings.defaults().string(settings::keys::dismissedAnnouncementID) != announcement.id;
}

void AnnouncementService::take(std::optional<Announcement> announcement) {
  if (announcement && !applies(*announcement))
    announcement = std::nullopt;
  logger.debug("Announcement: {}", announcement ? announcement->id : "none");
  const auto former = *visible ? std::optional((*visible)->id) : std::nullopt;
  visible.set(std::move(announcement));
  const bool isUrgent = *visible && (*visible)->severity == Announcement::Severity::critical;
  if (isUrgent && (*visible)->id != former && bringToFront)
    bringToFront();
}

void AnnouncementService::dismiss() {
  if (!*visible)
    return;
  const auto id = (*visible)->id;
  visible.set(std::nullopt);
  services_.settings.defaults().set(settings::keys::dismissedAnnouncementID, id);
}

void AnnouncementService::openLink() {
  if (*visible && (*visible)->link)
    services_.uriLauncher.open((*visible)->link->absoluteString());
}

} // namespace ondrel::integrations
