#pragma once

#include "app/BrowserContent.h"
#include "app/CloseQuestion.h"
#include "app/ClosedTabs.h"
#include "app/FocusManager.h"
#include "app/ProgramVisibility.h"
#include "app/Quitting.h"
#include "app/SessionStore.h"
#include "app/WindowManager.h"
#include "async/Scope.h"
#include "attachments/AttachmentDownloader.h"
#include "attachments/FilesServices.h"
#include "attachments/FilesViewModel.h"
#include "highlights/HighlightExport.h"
#include "highlights/HighlightImport.h"
#include "highlights/HighlightService.h"
#include "highlights/KeptHighlights.h"
#include "highlights/file/HighlightStore.h"
#include "integrations/AnnouncementService.h"
#include "integrations/BackgroundNotice.h"
#include "integrations/DefaultEmailClient.h"
#include "integrations/EmailLinkService.h"
#include "integrations/GetAddressCommand.h"
#include "integrations/LoginItemManager.h"
#include "integrations/MailtoHandler.h"
#include "integrations/ScriptsManager.h"
#include "integrations/ServerLocationChecker.h"
#include "integrations/SpellingSettings.h"
#include "integrations/StatusIcon.h"
#include "integrations/UpdateManager.h"
#include "jmap/JMAPSession.h"
#include "jmap/newmail/NotificationManager.h"
#include "mcp/MCPServerManager.h"
#include "mcp/MCPSettingsModel.h"
#include "platform/MachineInfo.h"
#include "platform/ProgramInfo.h"
#include "program/AppDelegate.h"
#include "program/AppLifecycleService.h"
#include "program/UnsavedFiles.h"
#include "settings/AppSettings.h"
#include "settings/EnvironmentWatch.h"
#include "shortcuts/KeyboardShortcuts.h"
#include "web/DownloadNotices.h"
#include "web/MessageFiles.h"
#include "web/RunningDownloads.h"
#include "web/WebServices.h"
#include "web/WebViewConfiguration.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace ondrel::platform {
class BackgroundApplications;
class Clipboard;
class ContentTypes;
class CookieStore;
class DefaultMailHelper;
class Directories;
class DocumentDecoder;
class DocumentPrinter;
class LauncherBadge;
class FileReader;
class FileStore;
class GlobalShortcuts;
class HttpClient;
class KeptFile;
class LoginItem;
class SpellChecker;
class NewFiles;
class NetworkMonitor;
class NotificationCenter;
class Scripting;
class SleepMonitor;
class SoftwareUpdater;
class StatusItem;
class TcpListener;
class TextFormatting;
class UserFolders;
} // namespace ondrel::platform

namespace ondrel::program {

// The platform's abilities that the program stands on; all outlive it.
struct PlatformAbilities {
  platform::ProgramInfo programInfo;
  platform::MachineInfo machineInfo;
  platform::Application& application;
  platform::UserDefaults& defaults;
  platform::KeptFile& defaultsFile;
  platform::Directories& directories;
  platform::FileStore& files;
  platform::FileReader& fileReader;
  platform::UserFolders& userFolders;
  platform::NewFiles& newFiles;
  platform::WebViewFactory& webViews;
  platform::Panels& panels;
  platform::UriLauncher& uriLauncher;
  platform::Clipboard& clipboard;
  platform::CookieStore& cookies; // of the web views
  platform::HttpClient& http;
  platform::NetworkMonitor& networkMonitor;
  platform::NotificationCenter& notifications;
  platform::LauncherBadge& launcherBadge;
  platform::SleepMonitor& sleepMonitor;
  platform::Scripting& scripting;
  platform::StatusItem& statusItem;
  platform::GlobalShortcuts& globalShortcuts;
  platform::DefaultMailHelper& defaultMailHelper;
  platform::LoginItem& loginItem;
  platform::SpellChecker& spellChecker;
  platform::SoftwareUpdater& softwareUpdater;
  platform::BackgroundApplications& backgroundApplications;
  const platform::TextFormatting& textFormatting;
  const platform::ContentTypes& contentTypes;
  platform::DocumentDecoder& decoder;
  platform::DocumentPrinter& printer;
  std::string exportIcon; // the program's icon on exported pages, a PNG's bytes; empty for none
  std::function<std::unique_ptr<platform::TcpListener>()> makeTcpListener;
  // The value of an environment variable is set.
  std::function<bool(std::string_view name)> hasEnvironmentVariable;
  // A number from 0 to `most`, uniformly.
  std::function<unsigned(unsigned most)> randomUpTo;
  bool startsInBackground = false; // no window is wanted yet
  bool startedByBus = false;       // what the bus has started it for says which windows are wanted
};

// The root: owns the long-lived objects for the life of the process and makes them in a fixed order.
class OndrelApp {
 public:
  using ContentFactoryMaker = std::function<app::BrowserContentFactory(const web::WebServices&)>;

  OndrelApp(const PlatformAbilities& platform, settings::Site site, const web::PageScripts& scripts,
            const ContentFactoryMaker& makeContentFactory);
  ~OndrelApp();

  settings::AppSettings& settings() { return settings_; }
  app::WindowManager& windowManager() { return windowManager_; }
  app::Quitting& quitting() { return quitting_; }
  app::ProgramVisibility& visibility() { return visibility_; }
  shortcuts::KeyboardShortcuts& keyboardShortcuts() { return keyboardShortcuts_; }
  integrations::EmailLinkService& emailLinkService() { return emailLinkService_; }
  integrations::DefaultEmailClient& defaultEmailClient() { return defaultEmailClient_; }
  integrations::LoginItemManager& loginItem() { return loginItem_; }
  integrations::SpellingSettings& spelling() { return spelling_; }
  integrations::ScriptsManager& userScripts() { return scriptsManager_; }
  integrations::UpdateManager& updates() { return updates_; }
  highlights::HighlightService& highlightService() { return highlightService_; }
  highlights::HighlightExport& highlightExport() { return highlightExport_; }
  highlights::HighlightImport& highlightImport() { return highlightImport_; }
  integrations::AnnouncementService& announcements() { return announcements_; }
  integrations::ServerLocationChecker& serverLocation() { return serverLocation_; }
  jmap::JMAPSession& jmapSession() { return jmapSession_; }
  // One for each window of all attachments; goes before this object.
  std::unique_ptr<attachments::FilesViewModel> makeFilesViewModel(std::weak_ptr<platform::Window> window);
  mcp::MCPSettingsModel& mcpSettings() { return mcpSettings_; }
  AppLifecycleService& lifecycle() { return lifecycle_; }
  const web::WebServices& webServices() const { return webServices_; }
  // Begins the letter of a mailto link where the desktop would have it begun.
  void openMailto(const std::string& url);
  // The interface's own, which comes later than this object.
  void setShowSettings(std::function<void()> show) { showSettings_ = std::move(show); }
  void setHighlightSelection(decltype(web::WebServices::highlightSelection) highlight) {
    webServices_.highlightSelection = std::move(highlight);
  }

 private:
  void takeLinks(const PlatformAbilities& platform);
  void startAnnouncements(const PlatformAbilities& platform);
  void openSettings();

  settings::AppSettings settings_;
  const settings::EnvironmentWatch environmentWatch_{settings_};
  jmap::NotificationManager notificationManager_;
  web::MessageFiles messageFiles_;
  web::DownloadNotices downloadNotices_;
  web::RunningDownloads runningDownloads_;
  integrations::ScriptsManager scriptsManager_;
  web::WebServices webServices_;
  app::SessionStore sessionStore_;
  app::ClosedTabs closedTabs_;
  AppLifecycleService lifecycle_;
  std::function<void()> showSettings_;
  AppDelegate appDelegate_;
  app::WindowManager windowManager_;
  app::CloseQuestion closeQuestion_;
  app::Quitting quitting_;
  jmap::JMAPSession jmapSession_;
  app::FocusManager focusManager_;
  app::ProgramVisibility visibility_;
  integrations::EmailLinkService emailLinkService_;
  attachments::AttachmentDownloader attachmentDownloader_;
  const attachments::FilesServices filesServices_;
  integrations::GetAddressCommand getAddressCommand_;
  highlights::HighlightStore highlightStore_;
  highlights::HighlightService highlightService_;
  highlights::HighlightExport highlightExport_;
  highlights::HighlightImport highlightImport_;
  highlights::KeptHighlights keptHighlights_;
  integrations::MailtoHandler mailtoHandler_;
  mcp::MCPServerManager mcpServerManager_;
  mcp::MCPSettingsModel mcpSettings_;
  integrations::StatusIcon statusIcon_;
  integrations::DefaultEmailClient defaultEmailClient_;
  integrations::LoginItemManager loginItem_;
  integrations::SpellingSettings spelling_;
  integrations::BackgroundNotice backgroundNotice_;
  integrations::UpdateManager updates_;
  integrations::AnnouncementService announcements_;
  integrations::ServerLocationChecker serverLocation_;
  shortcuts::KeyboardShortcuts keyboardShortcuts_;
  UnsavedFiles unsavedFiles_;
  async::Scope scope_;
};

} // namespace ondrel::program
