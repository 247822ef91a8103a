#include "mcp/MCPServerManager.h"
#include "mcp/MCPSettingsModel.h"
#include "mcp/SetupCommand.h"

#include "async/VirtualEventLoop.h"
#include "async/sleep.h"
#include "settings/AppSettings.h"
#include "support/FakeDesktop.h"
#include "support/LogCapture.h"
#include "support/TestSite.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <map>

namespace ondrel::mcp {
namespace {

using namespace std::chrono_literals;
using Lines = std::vector<std::string>;

constexpr auto stopTime = 10ms;
constexpr auto drainTime = 100ms;

// What happens to the servers, in order, and the ones that live.
struct Servers {
  Lines events;
  std::map<int, MCPServer*> byPort;
  RPCHandler handler;
  std::optional<std::string> startError;
};

class FakeServer final : public MCPServer {
 public:
  explicit FakeServer(Servers& servers) : servers_(servers) {}
  ~FakeServer() override {
    note("gone");
    std::erase_if(servers_.byPort, [this](const auto& listening) { return listening.second == this; });
  }

  std::expected<void, std::string> start(std::uint16_t port) override {
    port_ = port;
    note("start");
    if (servers_.startError)
      return std::unexpected(*servers_.startError);
    EXPECT_FALSE(servers_.byPort.contains(port)) << "two servers on one port";
    servers_.byPort[port] = this;
    return {};
  }
  async::Task<void> stop() override {
    note("stop");
    co_await async::sleep(stopTime);
    note("stopped");
    servers_.byPort.erase(port_);
  }
  async::Task<void> drained() override {
    co_await async::sleep(drainTime);
    note("drained");
  }

 private:
  void note(const char* what) { servers_.events.push_back(fmt::format("{} {}", what, port_)); }

  Servers& servers_;
  int port_ = 0;
};

class NoTools final : public MCPMailTools {
 public:
  async::Task<ToolOutcome> searchEmails(EmailSearch) override { return none(); }
  async::Task<ToolOutcome> getEmail(std::string) override { return none(); }
  async::Task<ToolOutcome> listMailboxes() override { return none(); }
  async::Task<ToolOutcome> openInOndrel(std::string) override { return none(); }

 private:
  static async::Task<ToolOutcome> none() { co_return std::unexpected<std::string>("none"); }
};

class ManagerTest : public testing::Test {
 protected:
  static constexpr auto configPath = "/home/.claude.json";

  void set(bool enabled, std::int64_t port) {
    settings.set(settings::keys::mcpServerEnabled, enabled);
    defaults.set(settings::keys::mcpServerPort.name, port);
  }
  void start() {
    manager.start(std::make_unique<NoTools>());
    loop.advance(1s);
  }
  void restart() {
    manager.restart();
    loop.advance(1s);
  }
  // What happened since the last look.
  Lines events() { return std::exchange(servers.events, {}); }
  std::string config() { return files.files[configPath]; }
  static std::string entry(int port) {
    return fmt::format("{{\n  \"mcpServers\": {{\n    \"ondrel\": {{\n      \"type\": \"http\",\n"
                       "      \"url\": \"http://localhost:{}/mcp\"\n    }}\n  }}\n}}",
                       port);
  }

  async::VirtualEventLoop loop;
  support::LogCapture log;
  support::FakeDefaults defaults;
  settings::AppSettings settings{defaults, support::testSite()};
  support::FakeFiles files;
  support::FakeClipboard clipboard;
  Servers servers;
  MCPServerManager manager{settings, files, files, [this](RPCHandler handler) {
                             servers.handler = std::move(handler);
                             return std::make_unique<FakeServer>(servers);
                           }};
};

TEST_F(ManagerTest, DoesNothingByDefault) {
  start();
  EXPECT_EQ(events(), Lines());
  EXPECT_EQ(files.writes, 0);
  EXPECT_FALSE(*manager.isRunning);
  EXPECT_FALSE(*manager.claudeCodeDetected);
}

TEST_F(ManagerTest, ServesAndTellsClaudeCodeWhereFromTheStart) {
  set(true, 8123);
  restart();
  EXPECT_EQ(events(), Lines()) << "the mail can't be reached yet";
  EXPECT_EQ(files.writes, 0);

  start();
  EXPECT_EQ(events(), Lines{"start 8123"});
  EXPECT_TRUE(*manager.isRunning);
  EXPECT_EQ(config(), entry(8123));

  async::Scope scope;
  RPCAnswer answer;
  const auto ask = [](RPCHandler handler, RPCAnswer* result) -> async::Task<void> {
    *result = co_await handler(R"({"jsonrpc":"2.0","id":1,"method":"tools/list"})");
  };
  scope.spawn(ask(servers.handler, &answer));
  loop.runUntilIdle();
  EXPECT_EQ(answer.first, 200);
  EXPECT_TRUE(answer.second.contains("search_emails"));

  set(false, 8123);
  restart();
  EXPECT_EQ(events(), (Lines{"stop 8123", "stopped 8123", "drained 8123", "gone 8123"}));
  EXPECT_FALSE(*manager.isRunning);
  EXPECT_EQ(config(), "{\n  \"mcpServers\": {}\n}");
}

TEST_F(ManagerTest, TakesThePortOfTheSettings) {
  const std::pair<std::int64_t, int> cases[] = {
      {0, 7777}, {-1, 7777}, {1, 1}, {65535, 65535}, {INT64_MIN, 7777}};
  start();
  for (const auto& [stored, port] : cases) {
    set(true, stored);
    restart();
    EXPECT_TRUE(servers.byPort.contains(port)) << stored;
    EXPECT_EQ(config(), entry(port));
  }
}

TEST_F(ManagerTest, APortThatCannotBeIsTold) {
  for (const std::int64_t port : {65536L, 70000L, INT64_MAX}) {
    set(true, port);
    start();
    EXPECT_EQ(events(), Lines());
    EXPECT_FALSE(*manager.isRunning);
    const auto text = fmt::format("Invalid MCP server port: {}. Choose a port between 1 and 65535.", port);
    EXPECT_EQ(*manager.problem, text);
    EXPECT_EQ(log.count(fmt::format("error network: MCP server failed to start on port {}: {}", port, text)),
              1);
    EXPECT_EQ(files.writes, 0);
  }
  set(true, 65535);
  restart();
  EXPECT_TRUE(*manager.isRunning);
  EXPECT_EQ(*manager.problem, std::nullopt);
}

TEST_F(ManagerTest, TellsWhyNothingListens) {
  set(true, 7777);
  servers.startError = "no sockets";
  start();
  EXPECT_EQ(events(), (Lines{"start 7777", "gone 7777"}));
  EXPECT_FALSE(*manager.isRunning);
  EXPECT_EQ(*manager.problem, "no sockets");
  EXPECT_EQ(log.count("error network: MCP server failed to start on port 7777: no sockets"), 1);

  servers.startError.reset();
  restart();
  EXPECT_EQ(*manager.problem, std::nullopt);
  servers.byPort.at(7777)->failure.set("address already in use");
  EXPECT_EQ(*manager.problem, "address already in use");
  EXPECT_TRUE(*manager.isRunning) << "the start itself went well";
  set(false, 7777);
  restart();
  EXPECT_EQ(*manager.problem, std::nullopt);
}

TEST_F(ManagerTest, OfQuickChangesTheLastOneWins) {
  set(true, 1000);
  start();
  events();
  for (const int port : {1001, 1002, 1003}) {
    set(true, port);
    manager.restart();
  }
  loop.advance(stopTime / 2);
  set(true, 1004);
  manager.restart();
  loop.advance(stopTime);
  EXPECT_EQ(events(), (Lines{"stop 1000", "stopped 1000", "start 1004"}));
  EXPECT_EQ(config(), entry(1004));

  set(true, 1005);
  manager.restart();
  loop.advance(stopTime / 2);
  set(false, 1005);
  manager.restart();
  loop.advance(1s);
  EXPECT_EQ(events(),
            (Lines{"stop 1004", "stopped 1004", "drained 1000", "gone 1000", "drained 1004", "gone 1004"}));
  EXPECT_TRUE(servers.byPort.empty());
  EXPECT_FALSE(*manager.isRunning);
  EXPECT_EQ(config(), "{\n  \"mcpServers\": {}\n}");
}

TEST_F(ManagerTest, MayGoWhileServersStop) {
  for (const auto when : {0ms, 5ms, 50ms}) {
    Servers own;
    {
      MCPServerManager shortLived(settings, files, files,
                                  [&](auto) { return std::make_unique<FakeServer>(own); });
      set(true, 1000);
      shortLived.start(std::make_unique<NoTools>());
      loop.advance(1ms);
      shortLived.restart();
      loop.advance(when);
    }
    EXPECT_TRUE(own.byPort.empty());
    loop.advance(1s);
  }
}

TEST_F(ManagerTest, FindsClaudeCode) {
  for (const auto* path :
       {"/usr/local/bin/claude", "/opt/homebrew/bin/claude", "/usr/bin/claude", configPath}) {
    files.files = {{path, "{}"}};
    start();
    EXPECT_TRUE(*manager.claudeCodeDetected) << path;
  }
  files.files = {{"/bin/claude", ""}};
  start();
  EXPECT_FALSE(*manager.claudeCodeDetected);
}

TEST_F(ManagerTest, ServesThoughClaudeCodeCannotBeTold) {
  set(true, 7777);
  files.files[configPath] = "{ private";
  start();
  EXPECT_TRUE(*manager.isRunning);
  EXPECT_EQ(config(), "{ private");
  EXPECT_TRUE(log.anyStartsWith("notice network: MCP: the configuration of Claude Code was not changed: "));
  for (const auto& line : log.lines())
    EXPECT_FALSE(line.contains("private")) << "the log tells nothing of the content";

  files.full = true;
  files.files[configPath] = "{}";
  restart();
  EXPECT_TRUE(*manager.isRunning);
  EXPECT_EQ(config(), "{}");
}

class SettingsModelTest : public ManagerTest {
 protected:
  MCPSettingsModel model{settings, manager, clipboard};
  int changes = 0;
  base::Subscription watch = model.changed.subscribe([this] { ++changes; });
};

TEST_F(SettingsModelTest, EachChangeRestartsTheServer) {
  start();
  model.setEnabled(true);
  loop.advance(1s);
  EXPECT_EQ(events(), Lines{"start 7777"});
  EXPECT_TRUE(model.enabled());
  EXPECT_TRUE(model.setPort(" 8000 "));
  loop.advance(1s);
  EXPECT_EQ(events(), (Lines{"stop 7777", "stopped 7777", "start 8000", "drained 7777", "gone 7777"}));
  settings.set(settings::keys::runJS, true);
  EXPECT_TRUE(model.setPort("8000"));
  loop.advance(1s);
  EXPECT_EQ(events(), Lines()) << "nothing of this section has changed";
  model.setEnabled(false);
  loop.advance(1s);
  EXPECT_TRUE(servers.byPort.empty());
  EXPECT_EQ(changes, 3);
}

TEST_F(SettingsModelTest, KeepsPortsThatCannotBeFromBeingStored) {
  EXPECT_EQ(model.port(), 7777);
  for (const auto* text : {"", "x", "65536", "99999999999999999999", "80.5", "0x50"}) {
    const auto stored = model.setPort(text);
    EXPECT_EQ(stored.error(),
              fmt::format("Invalid MCP server port: {}. Choose a port between 1 and 65535.", text));
    EXPECT_EQ(model.port(), 7777);
  }
  EXPECT_TRUE(model.setPort("0"));
  EXPECT_EQ(model.port(), 0);
  EXPECT_TRUE(model.setupCommand().contains("http://localhost:0/mcp")) << "as it is shown";
  EXPECT_EQ(settings.mcpServerPort(), 7777) << "as it counts";
}

TEST_F(SettingsModelTest, ShowsTheControlsWhenClaudeCodeIsThereOrOnDemand) {
  start();
  EXPECT_TRUE(model.showsNotFound());
  model.showAnyway();
  EXPECT_FALSE(model.showsNotFound());
  EXPECT_EQ(changes, 1);
  EXPECT_TRUE(MCPSettingsModel(settings, manager, clipboard).showsNotFound()) << "it is not remembered";
  files.files["/usr/bin/claude"];
  start();
  EXPECT_FALSE(MCPSettingsModel(settings, manager, clipboard).showsNotFound());
}

TEST_F(SettingsModelTest, ShowsWhatTheServerSuffersFrom) {
  model.setEnabled(true);
  start();
  servers.byPort.at(7777)->failure.set("address already in use");
  EXPECT_EQ(model.problem(), "address already in use");
  EXPECT_EQ(changes, 2);
}

TEST_F(SettingsModelTest, CopiesTheCommand) {
  ASSERT_TRUE(model.setPort("8001"));
  model.copySetupCommand();
  EXPECT_EQ(clipboard.text, setupCommand(8001));
}

} // namespace
} // namespace ondrel::mcp
