#pragma once

#include "platform/TcpListener.h"
#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

#include <memory>
#include <string>
#include <utility>

namespace ondrel::platform::network {

class SocketPoller;

// An accepted connection. The socket is closed when this object and its tasks are gone.
class GioTcpConnection final : public TcpConnection {
 public:
  GioTcpConnection(glib::Ref<GSocket> socket, std::shared_ptr<SocketPoller> poller, std::string peerHost);

  const std::string& peerHost() const override { return peerHost_; }
  Peer peer() const override;
  async::Task<std::string> receive() override;
  async::Task<bool> send(std::string bytes) override;
  async::Task<bool> peerEnds() override;
  void endSending() override;

 private:
  glib::Ref<GSocket> socket_;
  std::shared_ptr<SocketPoller> poller_;
  std::string peerHost_;
};

} // namespace ondrel::platform::network
