#include "integrations/UpdateManager.h"
#include "integrations/UpdateTexts.h"
#include "support/FakeSoftwareUpdater.h"
#include "support/FakeTextFormatting.h"
#include "support/TestShell.h"

#include <gmock/gmock.h>

namespace ondrel::integrations {
namespace {

using namespace std::chrono_literals;
using platform::UpdateFault;
using Phase = UpdateState::Phase;
namespace keys = settings::keys;

class UpdateTest : public testing::Test {
 protected:
  UpdateTest() { restartProgram(); }

  void restartProgram() {
    manager.reset();
    manager.emplace(UpdateManager::Services{
        .updater = updater,
        .settings = shell.settings,
        .notifications = shell.notifications,
        .formatting = formatting,
        .programInfo = {"org.velmora.Ondrel", "Ondrel", "1.0", "100", true},
        .clock = [this] { return WallTime(wall + shell.loop.now().time_since_epoch() / 1ms * 1ms); },
        .showUpdates = {},
        .restart = [this] { ++restarts; }});
  }
  Phase after(async::Duration time) {
    shell.loop.advance(time);
    return manager->state->phase;
  }

  support::TestShell shell;
  support::FakeSoftwareUpdater updater;
  support::FakeTextFormatting formatting;
  std::chrono::milliseconds wall = std::chrono::days(20000);
  int restarts = 0;
  std::optional<UpdateManager> manager;
};

TEST_F(UpdateTest, GoesStepByStepAndOnlyWhenTold) {
  const auto checkForUpdates = [this] { manager->checkForUpdates(); };
  checkForUpdates();
  EXPECT_EQ(after(1500ms), Phase::checking);
  checkForUpdates(); // an impatient user
  manager->cancel();
  EXPECT_EQ(after(2s), Phase::idle);
  checkForUpdates();
  EXPECT_EQ(after(3s), Phase::available);
  checkForUpdates();
  EXPECT_EQ(after(500ms), Phase::checking);
  manager->cancel(); // before it is known who updates
  EXPECT_EQ(after(2s), Phase::available);
  EXPECT_EQ(*manager->source, platform::UpdateSource::packageService);
  manager->install(); // not downloaded
  EXPECT_EQ(after(1h), Phase::available);
  manager->download();
  EXPECT_EQ(after(600ms), Phase::downloading);
  EXPECT_EQ(manager->state->progress.percentage, 50);
  manager->cancel();
  EXPECT_EQ(after(2s), Phase::available);
  EXPECT_EQ(manager->state->problem, "");
  manager->download();
  EXPECT_EQ(after(2s), Phase::ready);
  checkForUpdates();
  EXPECT_EQ(after(3s), Phase::ready) << "it need not be downloaded twice";
  const auto found = std::exchange(updater.found, std::unexpected(UpdateFault{}));
  checkForUpdates();
  EXPECT_EQ(after(3s), Phase::ready) << "nor is it lost by a check that fails";
  updater.found = found;
  updater.installed = std::unexpected(UpdateFault{UpdateFault::Kind::refused, "error 48"});
  manager->install();
  EXPECT_EQ(after(2s), Phase::ready);
  EXPECT_TRUE(manager->state->problem.contains("not allowed"));
  updater.installed = {};
  manager->install();
  manager->restart();
  EXPECT_EQ(after(2s), Phase::needsRestart);
  EXPECT_EQ(restarts, 0);
  checkForUpdates();
  manager->restart();
  EXPECT_EQ(after(2s), Phase::needsRestart);
  EXPECT_EQ(restarts, 1);
  EXPECT_TRUE(shell.notificationCenter.requests.empty()) << "the user has it in front";
}

TEST_F(UpdateTest, NeverSaysUpToDateWithoutKnowing) {
  updater.found = std::unexpected(UpdateFault{UpdateFault::Kind::unreachable, "error 64"});
  manager->checkForUpdates();
  EXPECT_EQ(after(3s), Phase::failed);
  EXPECT_EQ(manager->lastUpdateCheckText(), "Never");
  updater.found = std::optional<platform::SoftwareUpdate>();
  manager->checkForUpdates();
  EXPECT_EQ(after(3s), Phase::upToDate);
  EXPECT_NE(manager->lastUpdateCheckText(), "Never");
  updater.who = platform::UpdateSource::none;
  manager->checkForUpdates();
  EXPECT_EQ(after(3s), Phase::idle);
  updater.replaced = true; // by the package manager, while the program runs
  manager->lookAround();
  EXPECT_EQ(after(0s), Phase::needsRestart);
}

TEST_F(UpdateTest, LooksByItselfAtTheIntervalAcrossRestarts) {
  updater.found = std::optional<platform::SoftwareUpdate>();
  const auto checksAfter = [this](async::Duration time) {
    updater.calls.clear();
    after(time);
    return std::ranges::count(updater.calls, "find quietly");
  };
  manager->start();
  EXPECT_EQ(checksAfter(50s), 0) << "the start has enough to do";
  EXPECT_EQ(checksAfter(12h), 1) << "never yet";
  restartProgram();
  manager->start();
  EXPECT_EQ(checksAfter(11h), 0);
  EXPECT_EQ(checksAfter(2h), 1) << "a day after the last one";
  shell.settings.defaults().set(keys::updateCheckInterval.name, -1.0); // nonsense: at once, then hourly
  EXPECT_EQ(checksAfter(190min), 4);
  shell.settings.set(keys::automaticallyChecksForUpdates, false);
  EXPECT_EQ(checksAfter(100h), 0);
  wall -= std::chrono::days(100); // a clock that was wrong
  shell.settings.set(keys::automaticallyChecksForUpdates, true);
  EXPECT_EQ(checksAfter(1min), 1);
}

TEST_F(UpdateTest, LooksQuietlyByItselfAndTellsWhatItFinds) {
  const auto& sent = shell.notificationCenter.requests;
  updater.needsPassword = true;
  manager->start();
  EXPECT_EQ(after(65s), Phase::idle) << "nobody asked";
  EXPECT_EQ(after(1h - 1500ms), Phase::checking) << "soon again";
  manager->checkForUpdates();
  EXPECT_EQ(after(3s), Phase::available) << "who comes to wait may be asked";
  EXPECT_TRUE(sent.empty());
  updater.needsPassword = false;
  after(25h);
  ASSERT_EQ(sent.size(), 1U);
  EXPECT_EQ(sent[0].content.title, "Ondrel 1.2 is available");
  shell.settings.set(keys::automaticallyDownloadsUpdates, true);
  EXPECT_EQ(after(2s), Phase::ready) << "the setting counts at once";
  EXPECT_EQ(after(48h), Phase::ready);
  EXPECT_EQ(sent.size(), 1U) << "told once";
}

} // namespace
} // namespace ondrel::integrations
