#include "integrations/UpdateSchedule.h"

#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ondrel::integrations {

namespace {

namespace keys = settings::keys;

using Seconds = std::chrono::duration<double>;

// The program has enough to do when it starts.
constexpr std::chrono::minutes startDelay{1};
// Whatever the file says.
constexpr double shortestInterval = 3600;
constexpr double longestInterval = 366.0 * 86400;

} // namespace

UpdateSchedule::UpdateSchedule(settings::AppSettings& settings, WallClock clock, std::function<void()> due)
    : settings_(settings), clock_(std::move(clock)), due_(std::move(due)),
      changes_(settings_.defaults().changed.subscribe([this](const std::string& key) {
        if (key == keys::automaticallyChecksForUpdates.name || key == keys::updateCheckInterval.name)
          arrange();
      })) {
}

void UpdateSchedule::start() {
  postpone(startDelay);
}

void UpdateSchedule::postpone(async::Duration delay) {
  notBefore_ = async::EventLoop::current().after(delay);
  arrange();
}

void UpdateSchedule::didCheck() {
  const Seconds now = clock_().time_since_epoch();
  settings_.defaults().set(keys::lastUpdateCheckDate, now.count());
  postpone({});
}

std::optional<WallTime> UpdateSchedule::lastCheck() const {
  const auto seconds = settings_.defaults().number(keys::lastUpdateCheckDate);
  constexpr double latest = 1e11; // some thousand years
  if (!seconds || !(*seconds > 0 && *seconds < latest))
    return std::nullopt;
  return WallTime(std::chrono::duration_cast<WallTime::duration>(Seconds(*seconds)));
}

async::Duration UpdateSchedule::untilDue() const {
  const auto last = lastCheck();
  const auto now = clock_();
  if (!last || *last > now)
    return {};
  auto interval = settings_.get(keys::updateCheckInterval);
  interval = std::isfinite(interval) ? std::clamp(interval, shortestInterval, longestInterval)
                                     : keys::updateCheckInterval.fallback;
  return std::chrono::duration_cast<async::Duration>(Seconds(interval)) - (now - *last);
}

void UpdateSchedule::arrange() {
  timer_.stop();
  if (!notBefore_ || !settings_.get(keys::automaticallyChecksForUpdates))
    return;
  const auto delay =
      std::max({untilDue(), *notBefore_ - async::EventLoop::current().now(), async::Duration{}});
  timer_ = async::Timer(delay, [this] {
    notBefore_.reset();
    due_();
  });
}

} // namespace ondrel::integrations
