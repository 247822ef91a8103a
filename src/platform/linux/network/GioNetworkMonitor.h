#pragma once

#include "platform/NetworkMonitor.h"
#include "platform/linux/glib/Connection.h"

#include <gio/gio.h>

namespace ondrel::platform::network {

// By what GIO asks: NetworkManager, the portal in a sandbox, the kernel's routes where neither is.
class GioNetworkMonitor final : public NetworkMonitor {
 public:
  // Another monitor than the desktop's is for tests.
  explicit GioNetworkMonitor(GNetworkMonitor* monitor = g_network_monitor_get_default());

 private:
  glib::Ref<GNetworkMonitor> monitor_;
  glib::Connection changed_;
};

} // namespace ondrel::platform::network
