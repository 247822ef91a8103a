#include "ToolsTest.h"

#include "async/Timer.h"
#include "mcp/MCPServerManager.h"
#include "mcp/MCPSettingsModel.h"
#include "support/LogCapture.h"

#include <algorithm>
#include <optional>

namespace ondrel::mcp {
namespace {

using namespace std::chrono_literals;

constexpr auto stopTime = 10ms;
constexpr auto drainTime = 100ms;

// What happens to the servers, in order.
struct Servers {
  std::vector<std::string> events;
  MCPServer* newest = nullptr;
  RPCHandler handler;
  std::expected<void, std::string> startResult;
  bool portIsTaken = false;
};

class FakeServer final : public MCPServer {
 public:
  explicit FakeServer(Servers& servers) : servers_(servers) { servers.newest = this; }
  ~FakeServer() override { note("gone"); }

  std::expected<void, std::string> start(std::uint16_t port) override {
    port_ = port;
    note("start");
    // As the real one, which binds the port on a later turn.
    if (servers_.startResult)
      binding_ = async::Timer(1ms, [this] {
        servers_.portIsTaken ? failure.set("address already in use") : isListening.set(true);
      });
    return servers_.startResult;
  }
  async::Task<void> stop() override {
    note("stop");
    co_await async::sleep(stopTime);
    note("stopped");
  }
  async::Task<void> drained() override {
    co_await async::sleep(drainTime);
    note("drained");
  }

 private:
  void note(const char* what) { servers_.events.push_back(fmt::format("{} {}", what, port_)); }

  Servers& servers_;
  int port_ = 0;
  async::Timer binding_;
};

class ManagerTest : public ToolsTest {
 protected:
  ManagerTest() { newManager(); }

  void newManager() {
    manager.emplace(settings, files, files, [this](RPCHandler handler) {
      servers.handler = std::move(handler);
      return std::make_unique<FakeServer>(servers);
    });
  }
  void set(bool enabled, std::int64_t port) {
    settings.set(settings::keys::mcpServerEnabled, enabled);
    defaults.set(settings::keys::mcpServerPort.name, port);
  }
  void start() {
    manager->start(services);
    loop.advance(1s);
  }
  void restart(async::Duration wait = 1s) {
    manager->restart();
    loop.advance(wait);
  }
  // What happened since the last look.
  Lines events() { return std::exchange(servers.events, {}); }
  bool toldToClaudeCode(int port) const {
    return config.contains(fmt::format("\"url\": \"http://localhost:{}/mcp\"", port));
  }

  support::LogCapture log;
  support::FakeFiles files;
  std::string& config = files.files["/home/.claude.json"] = "{}";
  Servers servers;
  std::optional<MCPServerManager> manager;
};

TEST_F(ManagerTest, ServesWhenItIsOnAndTheMailCanBeReached) {
  set(true, 8123);
  restart();
  EXPECT_EQ(events(), Lines()) << "the mail can't be reached yet";
  start();
  EXPECT_EQ(events(), Lines{"start 8123"});
  EXPECT_TRUE(*manager->isRunning);
  EXPECT_TRUE(toldToClaudeCode(8123));
  const auto answer = run(servers.handler(R"({"jsonrpc":"2.0","id":1,"method":"tools/list"})"));
  EXPECT_TRUE(answer.second.contains("search_emails"));

  set(false, 8123);
  restart();
  EXPECT_EQ(events(), (Lines{"stop 8123", "stopped 8123", "drained 8123", "gone 8123"}));
  EXPECT_FALSE(*manager->isRunning);
  EXPECT_EQ(config, "{\n  \"mcpServers\": {}\n}");
}

TEST_F(ManagerTest, TakesThePortOfTheSettingsWhereItCanBe) {
  start();
  for (const auto& [stored, port] : {std::pair(-1, 7777), {65535, 65535}}) {
    set(true, stored);
    restart();
    EXPECT_EQ(std::ranges::count(events(), fmt::format("start {}", port)), 1) << stored;
    EXPECT_TRUE(toldToClaudeCode(port));
  }
  set(true, 65536);
  restart();
  EXPECT_FALSE(*manager->isRunning);
  EXPECT_EQ(*manager->problem, "Invalid MCP server port: 65536. Choose a port between 1 and 65535.");
  EXPECT_FALSE(config.contains("http")) << "nothing can ever be there";
}

TEST_F(ManagerTest, TellsWhyNothingListens) {
  set(true, 7777);
  servers.startResult = std::unexpected("no sockets");
  start();
  EXPECT_FALSE(*manager->isRunning);
  EXPECT_EQ(*manager->problem, "no sockets");

  servers.startResult = {};
  restart();
  EXPECT_EQ(*manager->problem, std::nullopt);
  EXPECT_TRUE(toldToClaudeCode(7777));
  servers.portIsTaken = true;
  restart();
  EXPECT_EQ(*manager->problem, "address already in use");
  EXPECT_TRUE(*manager->isRunning) << "the start itself went well";
  EXPECT_FALSE(config.contains("http")) << "whoever has the port would be taken for the server";
}

TEST_F(ManagerTest, OfQuickChangesTheLastOneWins) {
  set(true, 1000);
  start();
  events();
  for (const int port : {1001, 1002, 1003}) {
    set(true, port);
    manager->restart();
  }
  loop.advance(stopTime / 2);
  set(true, 1004);
  restart(stopTime);
  EXPECT_EQ(events(), (Lines{"stop 1000", "stopped 1000", "start 1004"}));
  EXPECT_TRUE(toldToClaudeCode(1004));

  set(true, 1005);
  restart(stopTime / 2);
  set(false, 1005);
  restart();
  EXPECT_EQ(events(),
            (Lines{"stop 1004", "stopped 1004", "drained 1000", "gone 1000", "drained 1004", "gone 1004"}));
  EXPECT_FALSE(*manager->isRunning || config.contains("http"));
}

TEST_F(ManagerTest, MayGoWhileServersStop) {
  set(true, 1000);
  for (const auto when : {0ms, 5ms, 50ms}) {
    newManager();
    start();
    restart(when);
    manager.reset();
    const auto seen = events();
    EXPECT_EQ(std::ranges::count(seen, "gone 1000"), std::ranges::count(seen, "start 1000"));
    loop.advance(1s);
    EXPECT_EQ(events(), Lines());
  }
}

TEST_F(ManagerTest, ServesThoughClaudeCodeCannotBeTold) {
  set(true, 7777);
  for (const std::string old : {"{ private", "{}"}) {
    config = old;
    start();
    EXPECT_TRUE(*manager->isRunning);
    EXPECT_EQ(config, old);
    EXPECT_TRUE(manager->configurationProblem->has_value());
    for (const auto& line : log.lines())
      EXPECT_FALSE(line.contains("private")) << "the log tells nothing of the content";
    files.full = true;
  }
}

TEST_F(ManagerTest, EachChangeOfTheSettingsRestartsTheServer) {
  support::FakeClipboard clipboard;
  MCPSettingsModel model{settings, *manager, clipboard};
  int changes = 0;
  const auto watch = model.changed.subscribe([&] { ++changes; });
  start();
  model.setEnabled(true);
  loop.advance(1s);
  EXPECT_EQ(events(), Lines{"start 7777"});
  EXPECT_TRUE(model.setPort(" 8000 "));
  loop.advance(1s);
  EXPECT_EQ(events(), (Lines{"stop 7777", "stopped 7777", "start 8000", "drained 7777", "gone 7777"}));
  settings.set(settings::keys::runJS, true);
  EXPECT_TRUE(model.setPort("8000"));
  loop.advance(1s);
  EXPECT_EQ(events(), Lines()) << "nothing of this section has changed";
  EXPECT_TRUE(model.isRegistered());
  servers.newest->failure.set("address already in use");
  EXPECT_FALSE(model.isRegistered());
  EXPECT_EQ(changes, 6) << "Claude Code was found, two settings, registered, a problem, no longer so";
  files.files.clear();
  model.lookForClaudeCode();
  EXPECT_TRUE(model.showsNotFound()) << "it is on this machine no more";
}

} // namespace
} // namespace ondrel::mcp
