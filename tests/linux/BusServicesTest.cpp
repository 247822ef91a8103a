#include "platform/linux/services/BusServices.h"
#include "BusTest.h"
#include "StatusWatcher.h"

namespace ondrel::platform::services {
namespace {

class BusServicesTest : public BusTest {
 protected:
  // Without the toolkit's settings, which are what they are on this machine.
  static std::vector<DesktopService> onTheBus(std::optional<std::vector<DesktopService>> missing) {
    std::erase(missing.value(), DesktopService::settings);
    return *missing;
  }
};

TEST_F(BusServicesTest, AreThoseThatRunOrWouldBeStarted) {
  using enum DesktopService;
  using Services = std::vector<DesktopService>;
  BusServices services(connector());
  EXPECT_EQ(onTheBus(result(services.missing())),
            (Services{notifications, statusIcons, portal, accessibility}));
  bus.addService("org.a11y.Bus", "/bin/false");
  const auto other = bus.connect();
  support::TestBus::ownName(other, "org.freedesktop.Notifications");
  const std::string session = g_getenv("DBUS_SESSION_BUS_ADDRESS");
  g_setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), TRUE); // where the watcher goes
  support::StatusWatcher watcher;
  g_setenv("DBUS_SESSION_BUS_ADDRESS", session.c_str(), TRUE);
  EXPECT_EQ(onTheBus(result(services.missing())), Services{portal});
  watcher.hasHost = false;
  EXPECT_EQ(onTheBus(result(services.missing())), (Services{statusIcons, portal}));
  BusServices lone(connectorTo("unix:path=/nonexistent"));
  EXPECT_EQ(onTheBus(result(lone.missing())),
            (Services{sessionBus, notifications, statusIcons, portal, accessibility}));
}

} // namespace
} // namespace ondrel::platform::services
