#include "platform/linux/desktop/LauncherEntry.h"
#include "BusTest.h"

#include <vector>

namespace ondrel::platform {

namespace {

using Strings = std::vector<std::string>;

constexpr const char* launcherName = "com.canonical.Unity";

class LauncherEntryTest : public BusTest {
 protected:
  LauncherEntryTest()
      : signals(launcher, "com.canonical.Unity.LauncherEntry", "Update", nullptr,
                [this](const std::string&, const std::string&, GVariant* arguments) {
                  updates.emplace_back(glib::CString(g_variant_print(arguments, FALSE)).get());
                }) {
    support::TestBus::roundTrip(launcher); // it listens now
  }

  static std::string update(std::int64_t count) {
    return "('application://org.velmora.Ondrel.desktop', {'count': <int64 " + std::to_string(count) +
           ">, 'count-visible': <" + (count > 0 ? "true" : "false") + ">})";
  }
  // Waits until there are so many updates.
  bool heard(std::size_t number) {
    return until([&] { return updates.size() >= number; });
  }

  const glib::Ref<GDBusConnection> launcher = bus.connect();
  Strings updates;
  desktop::BusSubscription signals;
};

TEST_F(LauncherEntryTest, ShowsTheNumberAndTakesItAway) {
  desktop::LauncherEntry entry("org.velmora.Ondrel", connector());
  entry.setLabel("3"); // before there is a bus
  ASSERT_TRUE(heard(1));
  for (const auto* label : {"3", "12", "", "no number", "4294967296"})
    entry.setLabel(*label ? std::optional<std::string>(label) : std::nullopt);
  ASSERT_TRUE(heard(4));
  EXPECT_EQ(updates, (Strings{update(3), update(12), update(0), update(4294967296)}));
}

TEST_F(LauncherEntryTest, TellsALauncherThatStartsLater) {
  desktop::LauncherEntry entry("org.velmora.Ondrel", connector());
  entry.setLabel("4");
  ASSERT_TRUE(heard(1));
  support::TestBus::ownName(launcher, launcherName);
  ASSERT_TRUE(heard(2));
  entry.setLabel(std::nullopt);
  ASSERT_TRUE(heard(3));

  support::TestBus::releaseName(launcher, launcherName);
  const auto restarted = bus.connect();
  support::TestBus::ownName(restarted, launcherName); // has nothing to show, and none to take away
  hear();
  entry.setLabel("6");
  ASSERT_TRUE(heard(4));
  EXPECT_EQ(updates, (Strings{update(4), update(4), update(0), update(6)}));
}

} // namespace

} // namespace ondrel::platform
