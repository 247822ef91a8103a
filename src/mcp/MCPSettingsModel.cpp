#include "mcp/MCPSettingsModel.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "mcp/ClaudeConfig.h"
#include "mcp/InvalidPort.h"
#include "mcp/MCPServerManager.h"
#include "mcp/SetupCommand.h"
#include "platform/Clipboard.h"
#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"

#include <limits>

namespace ondrel::mcp {

namespace keys = settings::keys;

MCPSettingsModel::MCPSettingsModel(settings::AppSettings& settings, MCPServerManager& manager,
                                   platform::Clipboard& clipboard)
    : settings_(settings), manager_(manager), clipboard_(clipboard),
      settingChanges_(settings.defaults().changed.subscribe([this](const std::string& key) {
        if (key != keys::mcpServerEnabled.name && key != keys::mcpServerPort.name)
          return;
        manager_.restart();
        changed.emit();
      })),
      detections_(manager.claudeCodeDetected.observe([this] { changed.emit(); })),
      problems_(manager.problem.observe([this] { changed.emit(); })),
      configurationProblems_(manager.configurationProblem.observe([this] { changed.emit(); })),
      registrations_(manager.isRegistered.observe([this] { changed.emit(); })) {
}

void MCPSettingsModel::lookForClaudeCode() {
  manager_.lookForClaudeCode();
}

bool MCPSettingsModel::showsNotFound() const {
  return !*manager_.claudeCodeDetected && !showAnyway_;
}

void MCPSettingsModel::showAnyway() {
  showAnyway_ = true;
  changed.emit();
}

bool MCPSettingsModel::enabled() const {
  return settings_.get(keys::mcpServerEnabled);
}

void MCPSettingsModel::setEnabled(bool enabled) {
  settings_.set(keys::mcpServerEnabled, enabled);
}

std::int64_t MCPSettingsModel::port() const {
  return settings_.defaults().integer(keys::mcpServerPort.name).value_or(keys::mcpServerPort.fallback);
}

std::expected<void, std::string> MCPSettingsModel::setPort(std::string_view text) {
  const auto number = base::parsedInteger(base::trimmed(text));
  if (!number || *number > std::numeric_limits<std::uint16_t>::max())
    return std::unexpected(invalidPortText(base::displayLine(text)));
  settings_.defaults().set(keys::mcpServerPort.name, std::int64_t{*number});
  return {};
}

bool MCPSettingsModel::isRegistered() const {
  return *manager_.isRegistered;
}

std::string MCPSettingsModel::registeredNote() const {
  return base::trFormat("Restart Claude Code to use it. Other assistants find the server at {}.",
                        serverURL(settings_.mcpServerPort()));
}

std::string MCPSettingsModel::setupCommand() const {
  return mcp::setupCommand(port());
}

void MCPSettingsModel::copySetupCommand() {
  clipboard_.writeString(setupCommand());
}

std::optional<std::string> MCPSettingsModel::problem() const {
  if (*manager_.problem || !*manager_.configurationProblem)
    return *manager_.problem;
  return base::trFormat(
      "Claude Code's configuration was not changed ({}). The setup command does it by hand.",
      **manager_.configurationProblem);
}

const std::string& MCPSettingsModel::helpURL() const {
  return settings_.site().projectFAQURL;
}

} // namespace ondrel::mcp
