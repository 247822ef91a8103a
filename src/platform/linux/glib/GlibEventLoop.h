#pragma once

#include "async/EventLoop.h"
#include "platform/linux/glib/Ref.h"

#include <deque>
#include <map>
#include <unordered_map>

namespace ondrel::glib {

// The event loop on GLib's default main context. Time is CLOCK_BOOTTIME, which goes on while the machine
// sleeps, so that a delay that ends during the sleep is over at wake-up: GLib's own timeouts stand still
// meanwhile. Installs itself as the current loop.
class GlibEventLoop final : public async::EventLoop {
 public:
  GlibEventLoop();
  ~GlibEventLoop() override;

  async::TimePoint now() const override;
  TimerId schedule(async::TimePoint when, async::Callback callback) override;
  void cancel(TimerId id) noexcept override;
  void post(async::Callback callback) override;

 private:
  struct Source;
  void arm();
  void runTimers();
  void runPosted();

  // First, so that callbacks dropped at the end still find the loop.
  async::EventLoop::Installed installed_{*this};

  using Timers = std::multimap<async::TimePoint, std::pair<TimerId, async::Callback>>;
  Timers timers_;
  std::unordered_map<TimerId, Timers::iterator> byId_;
  std::uint64_t lastId_ = 0;
  std::deque<async::Callback> posted_;
  int timerFd_ = -1;
  GSource* source_ = nullptr;
};

} // namespace ondrel::glib
