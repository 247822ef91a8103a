#pragma once

#include <adwaita.h>

#include <functional>
#include <string>

namespace ondrel::integrations {
class DefaultEmailClient;
class LoginItemManager;
class ScriptsManager;
class SpellingSettings;
class UpdateManager;
struct UpdateState;
} // namespace ondrel::integrations

namespace ondrel::jmap {
class MailQueries;
}

namespace ondrel::mcp {
class MCPSettingsModel;
}

namespace ondrel::platform {
class DesktopServices;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::shortcuts {
class KeyboardShortcuts;
}

namespace ondrel::ui {

// What the sections of the settings window stand on; all outlive it.
struct SettingsServices {
  settings::AppSettings& settings;
  jmap::MailQueries& mail;
  mcp::MCPSettingsModel& mcp;
  shortcuts::KeyboardShortcuts& shortcuts;
  integrations::DefaultEmailClient& defaultEmail;
  integrations::LoginItemManager& loginItem;
  integrations::SpellingSettings& spelling;
  integrations::ScriptsManager& userScripts;
  integrations::UpdateManager& updates;
  platform::DesktopServices& desktopServices;
  std::function<void(const std::string& url)> openURL; // in the desktop's browser
  std::function<void(const std::string& url)> openMailto;
};

// A group of rows on a page of the settings window, for as long as the window is open.
class SettingsSection {
 public:
  SettingsSection() = default;
  virtual ~SettingsSection() = default;
  SettingsSection(const SettingsSection&) = delete;
  SettingsSection& operator=(const SettingsSection&) = delete;

  virtual AdwPreferencesGroup* group() = 0; // the window takes it
  // Stores what was typed and not confirmed: the window closes.
  virtual void commit() {}
};

} // namespace ondrel::ui
