#pragma once

#include "async/Scope.h"
#include "platform/ProgramInfo.h"
#include "ui/FilePanel.h"
#include "ui/attachments/FilesWindow.h"
#include "ui/commands/BrowserCommands.h"
#include "ui/commands/CommandActions.h"
#include "ui/commands/CopiedLinkWatch.h"
#include "ui/commands/FocusedTab.h"
#include "ui/commands/HighlightSelection.h"
#include "ui/commands/PrimaryMenu.h"
#include "ui/highlights/HighlightsWindow.h"
#include "ui/highlights/TransferProgressWindow.h"
#include "ui/page/BrowserChrome.h"
#include "ui/settings/SettingsWindow.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::highlights {
class HighlightExport;
class HighlightImport;
class HighlightStore;
} // namespace ondrel::highlights

namespace ondrel::platform {
class DesktopServices;
class UriLauncher;
} // namespace ondrel::platform

namespace ondrel::ui {

// The interface around the pages, for the life of the process: commands with their keys, the menu, and the
// bar of each top-level. Made after the application has started and before the first window.
class UserInterface {
 public:
  struct Services {
    GtkApplication* toolkitApplication;
    platform::Application& application;
    app::WindowManager& windows;
    settings::AppSettings& settings;
    platform::WebViewFactory& webViews;
    platform::UriLauncher& uriLauncher;
    jmap::MailQueries& mail;
    mcp::MCPSettingsModel& mcpSettings;
    shortcuts::KeyboardShortcuts& shortcuts;
    integrations::DefaultEmailClient& defaultEmail;
    integrations::LoginItemManager& loginItem;
    integrations::SpellingSettings& spelling;
    integrations::ScriptsManager& userScripts;
    integrations::UpdateManager& updates;
    platform::DesktopServices& desktopServices;
    highlights::HighlightStore& highlights;
    highlights::HighlightExport& highlightExport;
    highlights::HighlightImport& highlightImport;
    std::function<async::Task<void>()> removeAllHighlights; // asks first
    std::function<void()> showServerLocation;
    std::function<void()> toggleVisibility;
    std::function<void()> quit; // asks too
    platform::ProgramInfo programInfo;
    std::function<std::string()> describeSystem; // for who reads a report of a fault; lines
    const platform::TextFormatting& textFormatting;
    const platform::ContentTypes& contentTypes;
    platform::DocumentDecoder& decoder;
    std::function<std::unique_ptr<attachments::FilesViewModel>(std::weak_ptr<platform::Window>)>
        makeFilesViewModel;
    std::function<async::Task<void>()> copyAppleMailLink; // to the message in front
    std::function<void(const std::string& url)> openMailto;
    // Shows a message of the service; the id of the email where it is known.
    std::function<void(const std::string& url, const std::optional<std::string>& emailId)> navigate;
  };

  explicit UserInterface(const Services& services);
  UserInterface(const UserInterface&) = delete;
  UserInterface& operator=(const UserInterface&) = delete;

  void showSettings() { settingsWindow_.show(); }
  void highlightSelection(const std::shared_ptr<web::WindowViewModel>& tab) {
    highlightSelection_.performIn(tab);
  }
  const std::vector<CommandGroup>& commands() const { return groups_; }

 private:
  BrowserCommands::Actions commandActions();
  void checkForUpdates();
  void toggleFullScreen() const;
  GtkWindow* activeWindow() const;

  const Services services_;
  FocusedTab focusedTab_;
  HighlightSelection highlightSelection_;
  HighlightsWindow highlightsWindow_;
  const TransferProgressWindow exportProgress_;
  const TransferProgressWindow importProgress_;
  FilePanel filePanel_;
  FilesWindow filesWindow_;
  SettingsWindow settingsWindow_;
  BrowserCommands commands_;
  const std::vector<CommandGroup> groups_;
  const CommandActions actions_;
  const PrimaryMenu menu_;
  const ChromeServices chrome_;
  const CopiedLinkWatch copiedLink_;
  async::Scope scope_;
};

} // namespace ondrel::ui
