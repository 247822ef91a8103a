#pragma once

#include "base/Event.h"
#include "base/Observable.h"
#include "base/Translation.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace ondrel::platform {
class Clipboard;
}

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::mcp {

class MCPServerManager;

namespace settings_text {

inline constexpr const char* section = base::trMark("Claude Code integration (MCP)");
inline constexpr const char* notFound = base::trMark("Claude Code not found on this machine.");
inline constexpr const char* showAnyway = base::trMark("Show anyway");
inline constexpr const char* enable = base::trMark("Enable MCP server");
// Who gets to what, in the words of docs/local-server.md.
inline constexpr const char* whatItOpens = base::trMark(
    "While it is on, every program that runs as you on this machine can search and read all your mail and "
    "open "
    "messages in a window, without asking. None can change or send mail. Other users and other machines "
    "can't connect.");
inline constexpr const char* registered = base::trMark("Registered with Claude Code");
inline constexpr const char* port = base::trMark("Port:");
inline constexpr const char* portPrompt = "7777";
inline constexpr const char* caption = base::trMark("Run once in a terminal, then restart Claude Code:");
inline constexpr const char* copy = base::trMark("Copy setup command");

} // namespace settings_text

// What the section of the settings window shows and does; a view only draws it. While it lives, each change
// of the two settings restarts the server. Main thread only.
class MCPSettingsModel {
 public:
  // All outlive it.
  MCPSettingsModel(settings::AppSettings& settings, MCPServerManager& manager,
                   platform::Clipboard& clipboard);

  // Each time that the settings are opened.
  void lookForClaudeCode();
  // Only the text that nothing was found and the button that shows all the same.
  bool showsNotFound() const;
  void showAnyway();

  bool enabled() const;
  void setEnabled(bool enabled);

  // As it is stored: a value below 1 counts as the default for the server and is shown as it is.
  std::int64_t port() const;
  // Stores what the user typed. An error, for people, leaves the port as it was.
  std::expected<void, std::string> setPort(std::string_view text);

  // Claude Code knows of the server: the command has nothing to do.
  bool isRegistered() const;
  std::string registeredNote() const;
  std::string setupCommand() const;
  void copySetupCommand();
  // Why nothing listens although the setting is on, or why Claude Code doesn't know of it.
  std::optional<std::string> problem() const;
  // Of the page that explains it all; empty where there is none.
  const std::string& helpURL() const;

  base::Event<> changed; // anything of the above

 private:
  settings::AppSettings& settings_;
  MCPServerManager& manager_;
  platform::Clipboard& clipboard_;
  bool showAnyway_ = false;
  base::Subscription settingChanges_;
  base::Subscription detections_;
  base::Subscription problems_;
  base::Subscription configurationProblems_;
  base::Subscription registrations_;
};

} // namespace ondrel::mcp
