#pragma once

#include "async/Future.h"
#include "async/Task.h"
#include "platform/linux/files/UniqueFd.h"

#include <glib.h>

#include <cstdint>
#include <memory>
#include <unordered_map>

namespace ondrel::platform::network {

// Waits for many sockets at the main loop's price for one: GLib walks through all its descriptors on each
// turn, so that hundreds of idle connections would slow down everything else. A turn serves a few sockets
// only, and after what is due on the screen.
class SocketPoller : public std::enable_shared_from_this<SocketPoller> {
 public:
  // Null when the process has no descriptor left.
  static std::shared_ptr<SocketPoller> make();
  ~SocketPoller();
  SocketPoller(const SocketPoller&) = delete;
  SocketPoller& operator=(const SocketPoller&) = delete;

  // Waits until the socket can be read (EPOLLIN) or written (EPOLLOUT), its peer has ended
  // (EPOLLRDHUP), or it is broken. False when the task is
  // cancelled or forget() was called. The caller keeps the descriptor open; one wait for each at a time.
  async::Task<bool> ready(int fd, std::uint32_t events);
  // Ends the wait for a descriptor that is about to be closed.
  void forget(int fd);

 private:
  struct Wait {
    int fd;
    async::Resolver<bool> resolver;
  };
  class Registration;

  explicit SocketPoller(files::UniqueFd epoll);
  static async::Task<bool> wait(std::shared_ptr<SocketPoller> self, int fd, std::uint32_t events);
  bool add(std::uint64_t id, int fd, std::uint32_t events);
  void remove(std::uint64_t id);
  void dispatch();

  files::UniqueFd epoll_;
  GSource* source_;
  std::uint64_t lastId_ = 0;
  std::unordered_map<std::uint64_t, Wait> waits_;
};

} // namespace ondrel::platform::network
