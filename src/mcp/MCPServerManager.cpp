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

void MCPServerManager::start(std::unique_ptr<MCPMailTools> tools) {
  tools_ = std::move(tools);
  dispatch_.emplace(*tools_);
  claudeCodeDetected.set(claudeConfig_.detect());
  restart();
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
  std::expected<void, std::string> told;
  const auto port = settings_.mcpServerPort();
  if (!settings_.get(settings::keys::mcpServerEnabled))
    told = claudeConfig_.unregister();
  else if (port > std::numeric_limits<std::uint16_t>::max())
    // Not for Claude Code either: nothing can ever be there.
    failToStart(port, invalidPortText(std::to_string(port)));
  else if (dispatch_) {
    told = claudeConfig_.registerServer(port);
    startServer(port);
  }
  if (!told)
    logger_.notice("MCP: the configuration of Claude Code was not changed: {}", told.error());
}

async::Task<void> MCPServerManager::stopServer() {
  problem.set(std::nullopt);
  if (!server_)
    co_return;
  co_await server_->stop();
  serverFailures_.reset();
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
  serverFailures_ = server_->failure.observe([this] { problem.set(*server_->failure); });
  problem.set(*server_->failure);
  isRunning.set(true);
}

void MCPServerManager::failToStart(std::int64_t port, std::string reason) {
  logger_.error("MCP server failed to start on port {}: {}", port, reason);
  problem.set(std::move(reason));
  isRunning.set(false);
}

} // namespace ondrel::mcp
