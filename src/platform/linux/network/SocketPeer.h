#pragma once

#include "platform/TcpListener.h"

namespace ondrel::platform::network {

// Whose process has the other end of a connected TCP socket of this machine, as the kernel's socket tables
// tell (sock_diag(7)). `unknown` also for a peer on another machine.
TcpConnection::Peer peerOfSocket(int fd);

} // namespace ondrel::platform::network
