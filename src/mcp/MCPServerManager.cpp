#include "mcp/MCPServerManager.h"

#include "mcp/InvalidPort.h"
#include "settings/AppSettings.h"

#include <cstdint>
#include <limits>
#include <utility>

namespace ondrel::mcp {

MCPServerManager::MCPServerManager(settings::AppSettings& settings, platform::Directories& directories,
                                   platform::FileStore& files, MCPServerFactory makeServer)
    : settings_(settings), claudeConfig_(directories, files), makeServer_(std::move(makeServer)) {
}

void MCPServerManager::start(tools::ToolServices services) {
  dispatch_.emplace(std::move(services));
  lookForClaudeCode();
  restart();
}

void MCPServerManager::lookForClaudeCode() {
  claudeCodeDetected.set(claudeConfig_.detect());
  if (server_)
    serverStateDidChange();
}

void MCPServerManager::restart() {
  restartWanted_ = true;
  if (restarting_.done())
    restarting_ = scope_.spawn(restartUntilSettled());
}

async::Task<void> MCPServerManager::restartUntilSettled() {
  while (std::exchange(restartWanted_, false))
    co_await restartOnce();
}

async::Task<void> MCPServerManager::restartOnce() {
  co_await stopServer();
  if (restartWanted_)
    co_return;
  const auto port = settings_.mcpServerPort();
  if (!settings_.get(settings::keys::mcpServerEnabled))
    unregister();
  else if (port > std::numeric_limits<std::uint16_t>::max())
    failToStart(port, invalidPortText(std::to_string(port)));
  else if (dispatch_)
    startServer(port);
}

void MCPServerManager::registerServer() {
  const auto done = claudeConfig_.registerServer(serverPort_);
  configured(done);
  isRegistered.set(done && *claudeCodeDetected);
}

void MCPServerManager::unregister() {
  isRegistered.set(false);
  configured(claudeConfig_.unregister());
}

void MCPServerManager::configured(const std::expected<void, std::string>& done) {
  if (done) {
    configurationProblem.set(std::nullopt);
    return;
  }
  logger_.notice("MCP: the configuration of Claude Code was not changed: {}", done.error());
  configurationProblem.set(done.error());
}

async::Task<void> MCPServerManager::stopServer() {
  problem.set(std::nullopt);
  if (!server_)
    co_return;
  co_await server_->stop();
  serverChanges_.clear();
  scope_.spawn(serveToTheEnd(std::move(server_)));
  isRunning.set(false);
}

// Requests that came in before the stop are still answered.
async::Task<void> MCPServerManager::serveToTheEnd(std::unique_ptr<MCPServer> server) {
  co_await server->drained();
}

void MCPServerManager::startServer(std::int64_t port) {
  auto server = makeServer_([this](std::string body) { return dispatch_->handleRPC(std::move(body)); });
  if (auto started = server->start(static_cast<std::uint16_t>(port)); !started) {
    failToStart(port, std::move(started).error());
    return;
  }
  server_ = std::move(server);
  serverPort_ = port;
  const auto changed = [this] { serverStateDidChange(); };
  serverChanges_.push_back(server_->failure.observe(changed));
  serverChanges_.push_back(server_->isListening.observe(changed));
  isRunning.set(true);
  serverStateDidChange();
}

void MCPServerManager::serverStateDidChange() {
  problem.set(*server_->failure);
  if (*server_->failure)
    unregister();
  else if (*server_->isListening)
    registerServer();
}

void MCPServerManager::failToStart(std::int64_t port, std::string reason) {
  logger_.error("MCP server failed to start on port {}: {}", port, reason);
  problem.set(std::move(reason));
  isRunning.set(false);
  unregister();
}

} // namespace ondrel::mcp
