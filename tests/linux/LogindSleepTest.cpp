#include "platform/linux/desktop/LogindSleep.h"
#include "BusTest.h"

#include <cstdlib>
#include <optional>

namespace ondrel::platform {

namespace {

constexpr const char* logindName = "org.freedesktop.login1";

class LogindSleepTest : public BusTest {
 protected:
  static void say(const glib::Ref<GDBusConnection>& sender, const char* member, GVariant* arguments) {
    g_dbus_connection_emit_signal(sender.get(), nullptr, "/org/freedesktop/login1",
                                  "org.freedesktop.login1.Manager", member, arguments, nullptr);
    support::TestBus::roundTrip(sender);
  }
  static void prepareForSleep(const glib::Ref<GDBusConnection>& sender, bool starts) {
    say(sender, "PrepareForSleep", g_variant_new("(b)", starts));
  }
  // Watches the machine until it wakes, so that the monitor listens for sure.
  bool listens(const glib::Ref<GDBusConnection>& logind) {
    wakes = 0;
    const bool heard = until([&] {
      prepareForSleep(logind, false);
      turn();
      return wakes > 0;
    });
    turn();
    wakes = 0;
    return heard;
  }

  int wakes = 0;
};

TEST_F(LogindSleepTest, HearsOfWakingFromLogindOnly) {
  setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().c_str(), 1);
  desktop::LogindSleep monitor; // on the system bus, as in the program
  const auto subscription = monitor.didWake.subscribe([&] { ++wakes; });
  auto logind = bus.connect();
  support::TestBus::ownName(logind, logindName);
  ASSERT_TRUE(listens(logind));

  const auto stranger = bus.connect();
  prepareForSleep(stranger, false);
  prepareForSleep(logind, true);
  say(logind, "PrepareForSleep", g_variant_new("(s)", "false"));
  say(logind, "PrepareForShutdown", g_variant_new("(b)", false));
  prepareForSleep(logind, false);
  ASSERT_TRUE(until([&] { return wakes > 0; }));
  turn();
  EXPECT_EQ(wakes, 1);

  // Another owner: the earlier one has become a stranger.
  support::TestBus::releaseName(logind, logindName);
  const auto restarted = bus.connect();
  support::TestBus::ownName(restarted, logindName);
  ASSERT_TRUE(listens(restarted));
  prepareForSleep(logind, false);
  prepareForSleep(restarted, false);
  ASSERT_TRUE(until([&] { return wakes > 0; }));
  turn();
  EXPECT_EQ(wakes, 1);

  // The bus may go; the program stays.
  const auto connected = glib::adopt(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
  bus.stop();
  ASSERT_TRUE(until([&] { return g_dbus_connection_is_closed(connected.get()); }));
  turn();
  EXPECT_EQ(wakes, 1);
  unsetenv("DBUS_SYSTEM_BUS_ADDRESS");
}

TEST_F(LogindSleepTest, MayEndWhileItTellsOfAWake) {
  const auto logind = bus.connect();
  support::TestBus::ownName(logind, logindName);
  std::optional<desktop::LogindSleep> monitor(connector());
  const auto subscription = monitor->didWake.subscribe([&] {
    ++wakes;
    monitor.reset();
  });
  ASSERT_TRUE(until([&] {
    prepareForSleep(logind, false);
    turn();
    return wakes > 0;
  }));
  prepareForSleep(logind, false);
  turn();
  EXPECT_EQ(wakes, 1);
}

} // namespace

} // namespace ondrel::platform
