#pragma once

#include "platform/TcpListener.h"
#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

#include <memory>
#include <string>

namespace ondrel::platform::network {

class SocketPoller;

// A port by GIO's sockets. One socket takes both IPv4 and IPv6; IPv4 alone where the machine has no IPv6.
class GioTcpListener final : public TcpListener {
 public:
  ~GioTcpListener() override { close(); }

  std::expected<void, std::string> listen(std::uint16_t port) override;
  async::Task<std::unique_ptr<TcpConnection>> accept() override;
  void close() override;

 private:
  glib::Ref<GSocket> socket_;
  std::shared_ptr<SocketPoller> poller_;
};

} // namespace ondrel::platform::network
