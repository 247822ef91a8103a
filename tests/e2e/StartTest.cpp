#include "Loopback.h"
#include "ProgramTest.h"

#include <csignal>
#include <random>

namespace ondrel::e2e {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class StartTest : public ProgramTest {};

TEST_F(StartTest, OpensTheServiceAndSavesItsSession) {
  const auto program = start();
  ASSERT_TRUE(waitForPage(*program)) << program->output();
  EXPECT_EQ(quit(*program), 0);
  const auto saved = session();
  ASSERT_TRUE(saved) << read(sessionFile());
  ASSERT_EQ(saved->windows.size(), 1U);
  ASSERT_EQ(saved->windows[0].tabs.size(), 1U);
  EXPECT_EQ(saved->windows[0].tabs[0].urlString, address);
  EXPECT_TRUE(saved->windows[0].tabs[0].interactionState);
  EXPECT_TRUE(saved->windows[0].frame);
  EXPECT_EQ(fs::status(sessionFile()).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_TRUE(read(defaultsFile()).contains("\"_lastMigratedBuild\""));
}

TEST_F(StartTest, UnseenTabsOutliveAnyNumberOfStarts) {
  app::PersistedTab tab{address + "mail/long", "Unseen", base::Bytes{1, 2, 3, 250}, 1.15, true};
  const app::PersistedSession before{
      {{{{address, "Front", std::nullopt, 1.0, true}, tab, tab}, app::PersistedFrame{80, 60, 700, 500}}}};
  write(sessionFile(), before.encoded());
  for (int i = 0; i < 2; ++i) {
    const auto program = start();
    ASSERT_TRUE(waitForPage(*program)) << program->output();
    EXPECT_EQ(quit(*program), 0);
    EXPECT_EQ(count(program->output(), "script installed on " + address + "mail/long"), 0U)
        << "nobody has shown it";
    const auto saved = session();
    ASSERT_TRUE(saved);
    ASSERT_EQ(saved->windows.at(0).tabs.size(), 3U);
    EXPECT_EQ(saved->windows[0].tabs[1], tab);
    EXPECT_EQ(saved->windows[0].tabs[2], tab);
    EXPECT_EQ(saved->windows[0].frame->width, 700);
    EXPECT_EQ(saved->windows[0].frame->height, 500);
  }
}

TEST_F(StartTest, ASecondStartHandsItsURLsOver) {
  const auto first = start();
  ASSERT_TRUE(waitForPage(*first)) << first->output();
  const auto second =
      start({"mailto:a@b?subject=x%20y", "email://abc", "foo bar", "mailto:\xFF", "EMAIL://x"});
  EXPECT_EQ(second->wait(20s), 0) << second->output();
  EXPECT_TRUE(eventually([&] { return first->output().contains("URL event with scheme EMAIL"); }))
      << first->output();
  for (const auto* line :
       {"URL event with scheme mailto", "URL event with scheme email", "Unexpected URL: foo bar"})
    EXPECT_EQ(count(first->output(), line), 1U) << line << "\n" << first->output();
  EXPECT_TRUE(second->output().contains("Unexpected URL")) << "what isn't text doesn't get as far as the bus";

  const auto third = start();
  EXPECT_EQ(third->wait(20s), 0) << third->output();
  EXPECT_TRUE(first->isRunning());
  EXPECT_EQ(quit(*first), 0);
}

TEST_F(StartTest, DamagedFilesAreKeptAsideAndDefaultsUsed) {
  write(sessionFile(), "{\"windows\":[{\"tabs\":[");
  write(defaultsFile(), "\xFF\xFE not ours");
  const auto program = start();
  ASSERT_TRUE(waitForPage(*program)) << program->output();
  EXPECT_EQ(quit(*program), 0);
  EXPECT_TRUE(program->output().contains("SessionStore: decode failed: "));
  EXPECT_EQ(read(sessionFile().string() + ".damaged-1"), "{\"windows\":[{\"tabs\":[");
  EXPECT_EQ(read(defaultsFile().string() + ".damaged-1"), "\xFF\xFE not ours");
  EXPECT_TRUE(session());
}

TEST_F(StartTest, WorksWithAProfileThatCantBeWritten) {
  // Root may write anywhere, but nobody can make a folder below a file.
  write(profile / "data/ondrel", "");
  write(profile / "config/ondrel", "");
  const auto program = start();
  ASSERT_TRUE(waitForPage(*program)) << program->output();
  EXPECT_EQ(quit(*program), 0);
  EXPECT_TRUE(program->output().contains("SessionStore: save failed: ")) << program->output();
}

TEST_F(StartTest, ASiteFileThatCantBeUsedIsOneClearLine) {
  write(profile / "broken.json", R"({"WebAppBaseURL":{"production":"https://x.example/"}})");
  for (const auto& site : {profile / "missing.json", profile / "broken.json", profile}) {
    const auto program = start({}, {{"ONDREL_SITE", site}});
    EXPECT_EQ(program->wait(20s), 2);
    EXPECT_EQ(count(program->output(), "\n"), 1U) << program->output();
    EXPECT_TRUE(program->output().contains(site.string())) << program->output();
  }
}

TEST_F(StartTest, WorksWithoutASessionBus) {
  for (const auto& bus :
       {std::optional<std::string>("unix:path=/nonexistent"), std::optional<std::string>()}) {
    // Some desktops have a program that starts a bus where there is none.
    const auto program = start({}, {{"DBUS_SESSION_BUS_ADDRESS", bus}, {"PATH", "/nonexistent"}});
    ASSERT_TRUE(waitForPage(*program)) << program->output();
    EXPECT_EQ(quit(*program), 0);
    EXPECT_EQ(count(program->output(), "No session bus"), 1U);
    EXPECT_FALSE(fs::exists("/.flatpak-info")) << "the engine's sandbox has left a trace on this machine";
  }
}

TEST_F(StartTest, WorksInATemporaryHomeWhereThereIsNone) {
  const auto missing = (profile / "missing").string();
  for (const auto& home : {missing, std::string("relative")}) {
    Environment nothing{{"HOME", home}};
    for (const auto* folder : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_STATE_HOME"})
      nothing[folder] = std::nullopt;
    const auto program = start({}, nothing);
    ASSERT_TRUE(waitForPage(*program)) << program->output();
    const auto output = program->output();
    const std::string words = "HOME names no folder: everything is kept in ";
    const auto at = output.find(words);
    ASSERT_NE(at, output.npos) << output;
    const auto begin = at + words.size();
    const fs::path temporary = output.substr(begin, output.find(',', begin) - begin);
    EXPECT_EQ(fs::status(temporary).permissions(), fs::perms::owner_all);
    EXPECT_TRUE(fs::exists(temporary / ".config/ondrel/defaults.json"));
    EXPECT_EQ(quit(*program), 0);
    EXPECT_FALSE(fs::exists(temporary));
  }
  EXPECT_FALSE(fs::exists(missing));
}

TEST_F(StartTest, TheDemonstrationIsOneAndKeepsToItsProfile) {
  const auto home = profile / "home";
  write(home / ".claude.json", "{}");
  write(profile / "demo/config/ondrel/defaults.json",
        R"({"_mcpServerEnabled":true,"_mcpServerPort":)" + std::to_string(freePort()) + "}");
  const std::vector<std::string> demo{"--demo=" + (profile / "demo").string()};
  const Environment environment{{"HOME", home}};
  const auto first = start(demo, environment);
  ASSERT_TRUE(waitForPage(*first)) << first->output();
  const auto ports = read(profile / "demo/ports.json");
  const auto second = start(demo, environment);
  EXPECT_EQ(second->wait(20s), 0) << second->output();
  EXPECT_EQ(read(profile / "demo/ports.json"), ports) << "another service has taken its place";
  // Without a bus the two can't find each other, but both see the profile.
  auto alone = environment;
  alone["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/nonexistent";
  const auto third = start(demo, alone);
  EXPECT_EQ(third->wait(20s), 2) << third->output();
  EXPECT_EQ(read(profile / "demo/ports.json"), ports);
  EXPECT_TRUE(first->isRunning());

  EXPECT_EQ(quit(*first), 0);
  EXPECT_TRUE(read(profile / "demo/home/.claude.json").contains("mcpServers"));
  EXPECT_EQ(read(home / ".claude.json"), "{}");
  EXPECT_EQ(std::distance(fs::directory_iterator(home), {}), 1);
  for (const auto* folder : {"config", "data", "cache"})
    EXPECT_FALSE(fs::exists(profile / folder)) << folder;
}

TEST_F(StartTest, AKilledProgramLeavesAWholeSession) {
  std::mt19937 random(std::random_device{}());
  for (int round = 0; round < 4; ++round) {
    const auto program = start();
    ASSERT_TRUE(waitForPage(*program)) << program->output();
    // The end saves: it is cut short at a random moment of it.
    program->signal(SIGTERM);
    const auto delay = std::chrono::microseconds(random() % 30000);
    eventually([] { return false; }, std::chrono::duration_cast<std::chrono::milliseconds>(delay));
    program->signal(SIGKILL);
    ASSERT_TRUE(program->wait(10s));
    if (fs::exists(sessionFile()))
      EXPECT_TRUE(session()) << read(sessionFile());
    EXPECT_FALSE(fs::exists(sessionFile().string() + ".damaged-1"));
  }
}

} // namespace
} // namespace ondrel::e2e
