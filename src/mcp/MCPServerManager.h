#pragma once

#include "async/Scope.h"
#include "base/Log.h"
#include "base/Observable.h"
#include "mcp/ClaudeConfig.h"
#include "mcp/MCPDispatch.h"
#include "mcp/MCPServer.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::mcp {

using MCPServerFactory = std::function<std::unique_ptr<MCPServer>(RPCHandler handler)>;

// Runs the local server as the settings say, and tells Claude Code where it is. One for the process, main
// thread only.
class MCPServerManager {
 public:
  // All outlive it.
  MCPServerManager(settings::AppSettings& settings, platform::Directories& directories,
                   platform::FileStore& files, MCPServerFactory makeServer);

  // Once, when the user's mail can be reached. Nothing is served before.
  void start(tools::ToolServices services);
  // After a change of the settings. Restarts don't overlap: one that is under way is followed by one more,
  // which reads the settings as they are by then.
  void restart();
  // It may have been installed since; then its configuration names the server that is running.
  void lookForClaudeCode();

  // The last start succeeded. The port may turn out to be in use all the same: see `problem`.
  base::Observable<bool> isRunning{false};
  // As start() and lookForClaudeCode() found it.
  base::Observable<bool> claudeCodeDetected{false};
  // Why nothing listens although the setting is on, for people.
  base::Observable<std::optional<std::string>> problem;
  // Why Claude Code's configuration doesn't say what it should, for people.
  base::Observable<std::optional<std::string>> configurationProblem;
  // Claude Code is on this machine, and its configuration names the server that is running.
  base::Observable<bool> isRegistered{false};

 private:
  async::Task<void> restartUntilSettled();
  async::Task<void> restartOnce();
  async::Task<void> stopServer();
  static async::Task<void> serveToTheEnd(std::unique_ptr<MCPServer> server);
  void startServer(std::int64_t port);
  void failToStart(std::int64_t port, std::string reason);
  // Only where our server answers: another program on the port would be given the assistant's questions.
  void serverStateDidChange();
  void registerServer();
  void unregister();
  void configured(const std::expected<void, std::string>& done);

  base::Logger logger_{"network"};
  settings::AppSettings& settings_;
  ClaudeConfig claudeConfig_;
  MCPServerFactory makeServer_;
  std::optional<MCPDispatch> dispatch_;
  std::unique_ptr<MCPServer> server_;
  std::int64_t serverPort_ = 0;
  std::vector<base::Subscription> serverChanges_;
  bool restartWanted_ = false;
  async::TaskHandle restarting_;
  async::Scope scope_;
};

} // namespace ondrel::mcp
