#include "platform/linux/network/SocketPoller.h"

#include <glib-unix.h>
#include <sys/epoll.h>

#include <algorithm>
#include <array>
#include <utility>

namespace ondrel::platform::network {

namespace {

// GTK redraws at G_PRIORITY_HIGH_IDLE + 20. Behind that, no flood of requests can hold up a frame. What waits
// for the loop to be idle has its turns beside them.
constexpr int priority = G_PRIORITY_DEFAULT_IDLE;
constexpr int socketsATurn = 16;

} // namespace

// One wait, for as long as its frame lives.
class SocketPoller::Registration {
 public:
  Registration(std::shared_ptr<SocketPoller> poller, std::uint64_t id)
      : poller_(std::move(poller)), id_(id) {}
  ~Registration() { poller_->remove(id_); }
  Registration(const Registration&) = delete;
  Registration& operator=(const Registration&) = delete;

 private:
  std::shared_ptr<SocketPoller> poller_;
  std::uint64_t id_;
};

std::shared_ptr<SocketPoller> SocketPoller::make() {
  files::UniqueFd epoll(epoll_create1(EPOLL_CLOEXEC));
  if (!epoll)
    return nullptr;
  return std::shared_ptr<SocketPoller>(new SocketPoller(std::move(epoll)));
}

SocketPoller::SocketPoller(files::UniqueFd epoll)
    : epoll_(std::move(epoll)), source_(g_unix_fd_source_new(epoll_.get(), G_IO_IN)) {
  const GUnixFDSourceFunc callback = [](gint, GIOCondition, gpointer self) -> gboolean {
    static_cast<SocketPoller*>(self)->dispatch();
    return G_SOURCE_CONTINUE;
  };
  g_source_set_callback(source_, G_SOURCE_FUNC(callback), this, nullptr);
  g_source_set_priority(source_, priority);
  g_source_set_static_name(source_, "ondrel sockets");
  g_source_attach(source_, nullptr);
}

SocketPoller::~SocketPoller() {
  g_source_destroy(source_);
  g_source_unref(source_);
}

async::Task<bool> SocketPoller::ready(int fd, std::uint32_t events) {
  return wait(shared_from_this(), fd, events);
}

async::Task<bool> SocketPoller::wait(std::shared_ptr<SocketPoller> self, int fd, std::uint32_t events) {
  auto [resolver, future] = async::makeFuture<bool>();
  const auto id = ++self->lastId_;
  self->waits_.emplace(id, Wait{fd, std::move(resolver)});
  const Registration registration(self, id);
  if (!self->add(id, fd, events))
    co_return false;
  const auto ready = co_await std::move(future);
  co_return ready.has_value();
}

// Reports once; after that the wait is over, and its frame goes with its next turn.
bool SocketPoller::add(std::uint64_t id, int fd, std::uint32_t events) {
  epoll_event event{.events = events | EPOLLONESHOT, .data = {.u64 = id}};
  return epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, fd, &event) == 0;
}

void SocketPoller::remove(std::uint64_t id) {
  const auto found = waits_.find(id);
  if (found == waits_.end())
    return;
  epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, found->second.fd, nullptr);
  waits_.erase(found);
}

void SocketPoller::forget(int fd) {
  const auto found = std::ranges::find(waits_, fd, [](const auto& wait) { return wait.second.fd; });
  if (found != waits_.end())
    remove(found->first);
}

void SocketPoller::dispatch() {
  std::array<epoll_event, socketsATurn> events{};
  const int count = epoll_wait(epoll_.get(), events.data(), socketsATurn, 0);
  for (int i = 0; i < count; ++i) {
    const std::uint64_t id =
        events.at(static_cast<std::size_t>(i)).data.u64; // packed: no reference binds to it
    if (const auto found = waits_.find(id); found != waits_.end())
      found->second.resolver.resolve(true);
  }
}

} // namespace ondrel::platform::network
