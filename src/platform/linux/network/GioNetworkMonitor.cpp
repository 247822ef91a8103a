#include "platform/linux/network/GioNetworkMonitor.h"

namespace ondrel::platform::network {

GioNetworkMonitor::GioNetworkMonitor(GNetworkMonitor* monitor)
    : monitor_(glib::share(monitor)),
      changed_(glib::connect<void(GNetworkMonitor*, gboolean)>(
          monitor, "network-changed",
          [this](GNetworkMonitor*, gboolean available) { isAvailable.set(available != FALSE); })) {
  isAvailable.set(g_network_monitor_get_network_available(monitor) != FALSE);
}

} // namespace ondrel::platform::network
