#include "platform/linux/glib/GlibEventLoop.h"

#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

#include <utility>

namespace ondrel::glib {

using async::TimePoint;

// One source for everything: it is ready when something is posted or the timer's descriptor is readable.
struct GlibEventLoop::Source {
  GSource base;
  GlibEventLoop* loop;
  gpointer timerTag;

  static Source* from(GSource* source) { return reinterpret_cast<Source*>(source); }

  static gboolean prepare(GSource* source, gint* timeout) {
    *timeout = -1;
    return !from(source)->loop->posted_.empty();
  }
  static gboolean check(GSource* source) {
    return !from(source)->loop->posted_.empty() ||
           g_source_query_unix_fd(source, from(source)->timerTag) != 0;
  }
  static gboolean dispatch(GSource* source, GSourceFunc, gpointer) {
    auto* self = from(source);
    if (g_source_query_unix_fd(source, self->timerTag) != 0)
      self->loop->runTimers();
    self->loop->runPosted();
    return G_SOURCE_CONTINUE;
  }
};

GlibEventLoop::GlibEventLoop() {
  static GSourceFuncs functions = {Source::prepare, Source::check, Source::dispatch,
                                   nullptr,         nullptr,       nullptr};
  timerFd_ = timerfd_create(CLOCK_BOOTTIME, TFD_CLOEXEC | TFD_NONBLOCK);
  source_ = g_source_new(&functions, sizeof(Source));
  Source::from(source_)->loop = this;
  Source::from(source_)->timerTag = g_source_add_unix_fd(source_, timerFd_, G_IO_IN);
  g_source_set_static_name(source_, "ondrel event loop");
  g_source_attach(source_, nullptr);
}

GlibEventLoop::~GlibEventLoop() {
  // What a dropped callback owns may cancel timers.
  while (!timers_.empty())
    cancel(timers_.begin()->second.first);
  posted_.clear();
  g_source_destroy(source_);
  g_source_unref(source_);
  close(timerFd_);
}

TimePoint GlibEventLoop::now() const {
  timespec time{};
  clock_gettime(CLOCK_BOOTTIME, &time);
  return TimePoint(std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec));
}

async::EventLoop::TimerId GlibEventLoop::schedule(TimePoint when, async::Callback callback) {
  const TimerId id{++lastId_};
  byId_.emplace(id, timers_.emplace(when, std::pair(id, std::move(callback))));
  arm();
  return id;
}

void GlibEventLoop::cancel(TimerId id) noexcept {
  const auto found = byId_.find(id);
  if (found == byId_.end())
    return;
  const auto dead = std::move(found->second->second.second);
  timers_.erase(found->second);
  byId_.erase(found);
  arm();
}

void GlibEventLoop::post(async::Callback callback) {
  posted_.push_back(std::move(callback));
}

void GlibEventLoop::arm() {
  itimerspec setting{};
  if (!timers_.empty()) {
    // A value of zero would disarm it: an instant of the past becomes the first nanosecond.
    const auto due = std::max(timers_.begin()->first.time_since_epoch(), async::Duration(1));
    setting.it_value.tv_sec = due / std::chrono::seconds(1);
    setting.it_value.tv_nsec = (due % std::chrono::seconds(1)).count();
  }
  timerfd_settime(timerFd_, TFD_TIMER_ABSTIME, &setting, nullptr);
}

void GlibEventLoop::runTimers() {
  std::uint64_t expirations = 0;
  [[maybe_unused]] const auto got = read(timerFd_, &expirations, sizeof expirations);
  const auto instant = now();
  while (!timers_.empty() && timers_.begin()->first <= instant) {
    auto [id, callback] = std::move(timers_.begin()->second);
    byId_.erase(id);
    timers_.erase(timers_.begin());
    callback();
    // What an earlier timer set off comes before a later one, as in virtual time.
    runPosted();
  }
  arm();
}

void GlibEventLoop::runPosted() {
  // Only what is there now: what these post comes with the next turn, so that the desktop's events get
  // theirs.
  for (auto left = posted_.size(); left > 0 && !posted_.empty(); --left) {
    auto callback = std::move(posted_.front());
    posted_.pop_front();
    callback();
  }
}

} // namespace ondrel::glib
