#pragma once

#include "async/EventLoop.h"
#include "async/Timer.h"
#include "base/Event.h"

#include <chrono>
#include <functional>
#include <optional>

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::integrations {

// The time of day, which may be set back and forth.
using WallTime = std::chrono::sys_time<std::chrono::milliseconds>;
using WallClock = std::function<WallTime()>;

// Says when updates are to be looked for by itself: when the interval of the settings is over, counted across
// restarts and sleep, and at once where the clock has been set back behind the last time. Follows the
// settings. Main thread only.
class UpdateSchedule {
 public:
  // The settings outlive it.
  UpdateSchedule(settings::AppSettings& settings, WallClock clock, std::function<void()> due);

  // From now on it calls, once for each start(), postpone() and didCheck().
  void start();
  // Not before that time; for what has failed and what can't be done now.
  void postpone(async::Duration delay);
  void didCheck();
  // When that was; absent where it never was.
  std::optional<WallTime> lastCheck() const;

 private:
  void arrange();
  async::Duration untilDue() const;

  settings::AppSettings& settings_;
  const WallClock clock_;
  const std::function<void()> due_;
  std::optional<async::TimePoint> notBefore_; // absent while it hasn't started, and once it has called
  async::Timer timer_;
  base::Subscription changes_;
};

} // namespace ondrel::integrations
