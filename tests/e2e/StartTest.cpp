#include "ProgramTest.h"
#include "support/Loopback.h"

#include <sys/stat.h>

namespace ondrel::e2e {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class StartTest : public ProgramTest {};

TEST_F(StartTest, ASecondStartHandsItsURLsOver) {
  const auto first = start();
  ASSERT_TRUE(waitForPage(*first)) << first->output();
  const auto second = start({"mailto:a@b?subject=x%20y", "foo bar", "EMAIL://x"});
  EXPECT_EQ(second->wait(20s), 0) << second->output();
  for (const auto* line :
       {"URL event with scheme mailto", "Unexpected URL: foo bar", "URL event with scheme EMAIL"})
    EXPECT_TRUE(eventually([&] { return first->output().contains(line); })) << line << first->output();
  EXPECT_TRUE(first->isRunning());
  EXPECT_EQ(quit(*first), 0);
}

TEST_F(StartTest, DamagedFilesAreKeptAsideAndTheSessionIsSavedAnew) {
  write(sessionFile(), "{\"windows\":[{\"tabs\":[");
  write(defaultsFile(), "\xFF\xFE not ours");
  const auto program = start();
  ASSERT_TRUE(waitForPage(*program)) << program->output();
  EXPECT_EQ(quit(*program), 0);
  EXPECT_EQ(read(sessionFile().string() + ".damaged-1"), "{\"windows\":[{\"tabs\":[");
  EXPECT_EQ(read(defaultsFile().string() + ".damaged-1"), "\xFF\xFE not ours");
  const auto saved = session();
  ASSERT_TRUE(saved) << read(sessionFile());
  ASSERT_EQ(saved->windows.at(0).tabs.size(), 1U);
  EXPECT_EQ(saved->windows[0].tabs[0].urlString, address);
  EXPECT_TRUE(saved->windows[0].tabs[0].interactionState && saved->windows[0].frame);
}

TEST_F(StartTest, UserScriptsRunWithTheStylesAndSayWhereTheyFail) {
  const auto folder = profile / "My %documents/Scripts";
  write(profile / "config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"" + folder.parent_path().string() + "\"\n");
  write(folder / "style.css", "p {}");
  write(folder / "C.js", "let order = 'C';\r\n\r// \u2028\r");
  write(folder / "b.js", "order += document.querySelector('#ondrel-css').textContent;\nthrow Error(order);");
  ASSERT_EQ(mkfifo((folder / "D.js").c_str(), 0600), 0);
  write(defaultsFile(), R"({"_runJS": true, "_injectCSS": true})");
  const auto fails = [this](const std::string& how) {
    const auto program = start();
    EXPECT_TRUE(eventually([&] { return program->output().contains("ScriptsManager: JS failed: " + how); }))
        << program->output();
    EXPECT_EQ(quit(*program), 0);
  };
  fails("Error: Cp {} (b.js:2)");
  write(folder / "D1.js", "\nfunction unended() {");
  fails("SyntaxError: Unexpected end of script (D1.js:2)");
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
  const auto program = start({}, {{"ONDREL_SITE", profile / "missing.json"}});
  EXPECT_EQ(program->wait(20s), 2);
  EXPECT_EQ(count(program->output(), "\n"), 1U) << program->output();
  EXPECT_TRUE(program->output().contains("missing.json")) << program->output();
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
        R"({"_mcpServerEnabled":true,"_mcpServerPort":)" + std::to_string(support::freePort()) + "}");
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

} // namespace
} // namespace ondrel::e2e
