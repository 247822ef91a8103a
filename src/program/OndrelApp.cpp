#include "program/OndrelApp.h"

#include "base/Log.h"
#include "mcp/MCPHTTPServer.h"
#include "platform/Application.h"
#include "platform/TcpListener.h"
#include "platform/UriLauncher.h"
#include "program/DefaultClientAlert.h"
#include "program/SystemInfoManager.h"
#include "web/WindowViewModel.h"

namespace ondrel::program {

namespace {

// Set while the program runs inside a test runner, which wants windows and nothing else.
constexpr std::string_view testVariable = "XCTestConfigurationFilePath";

constexpr std::chrono::hours announcementInterval{12};
constexpr unsigned shortestAlertDelay = 60;
constexpr unsigned alertDelaySpread = 60;

} // namespace

OndrelApp::OndrelApp(const PlatformAbilities& platform, settings::Site site, const web::PageScripts& scripts,
                     const ContentFactoryMaker& makeContentFactory)
    : settings_(platform.defaults, std::move(site)), notificationManager_(platform.notifications),
      messageFiles_(platform.http, platform.newFiles, platform.directories, notificationManager_),
      downloadNotices_(notificationManager_, platform.application, platform.uriLauncher),
      scriptsManager_({.directories = platform.directories,
                       .folders = platform.userFolders,
                       .files = platform.files,
                       .reader = platform.fileReader,
                       .uriLauncher = platform.uriLauncher,
                       .settings = settings_,
                       .displayName = platform.programInfo.displayName}),
      webServices_{settings_,
                   scripts,
                   platform.application,
                   platform.webViews,
                   platform.panels,
                   platform.uriLauncher,
                   notificationManager_,
                   messageFiles_,
                   downloadNotices_,
                   runningDownloads_},
      sessionStore_(platform.directories, platform.files), closedTabs_(platform.directories, platform.files),
      appDelegate_(platform.application, platform.programInfo, platform.defaults, platform.directories,
                   platform.files, lifecycle_),
      windowManager_(platform.application, settings_, sessionStore_, closedTabs_, platform.clipboard,
                     webServices_, makeContentFactory(webServices_),
                     platform.startsInBackground || platform.startedByBus),
      closeQuestion_(windowManager_, platform.panels, runningDownloads_),
      quitting_(platform.application, windowManager_, closeQuestion_, platform.panels),
      jmapSession_({.settings = settings_,
                    .webViews = platform.webViews,
                    .cookies = platform.cookies,
                    .http = platform.http,
                    .launcherBadge = platform.launcherBadge,
                    .sleepMonitor = platform.sleepMonitor,
                    .notifications = notificationManager_,
                    .openURL = [this](const std::string& url) { windowManager_.addresses().openURL(url); }}),
      focusManager_(platform.application, windowManager_.windows(), settings_,
                    [this] { return lifecycle_.isHookmarkActive; }),
      visibility_(platform.application, windowManager_),
      emailLinkService_({.application = platform.application,
                         .windowManager = windowManager_,
                         .webServices = webServices_,
                         .mail = jmapSession_.mail(),
                         .notifications = notificationManager_,
                         .clipboard = platform.clipboard}),
      attachmentDownloader_({.mail = jmapSession_.mail(),
                             .settings = settings_,
                             .webViews = platform.webViews,
                             .linkScript = scripts.attachmentLink(),
                             .http = platform.http,
                             .newFiles = platform.newFiles,
                             .files = platform.files,
                             .directories = platform.directories,
                             .decoder = platform.decoder,
                             .types = platform.contentTypes}),
      filesServices_(
          {.mail = jmapSession_.mail(),
           .downloader = attachmentDownloader_,
           .types = platform.contentTypes,
           .directories = platform.directories,
           .files = platform.files,
           .printer = platform.printer,
           .frontWindow = [&application = platform.application] { return application.frontWindow(); },
           .watchDownload = {}, // each window's own
           .openMessage = [this](const std::string& url,
                                 const std::string& emailId) { emailLinkService_.navigate(url, emailId); }}),
      getAddressCommand_(platform.scripting, emailLinkService_, windowManager_),
      highlightStore_(platform.directories, platform.files),
      highlightService_(windowManager_, webServices_.messages, jmapSession_.mail(), highlightStore_,
                        settings_, platform.panels),
      highlightExport_({.store = highlightStore_,
                        .mail = jmapSession_.mail(),
                        .settings = settings_,
                        .application = platform.application,
                        .panels = platform.panels,
                        .files = platform.files,
                        .textFormatting = platform.textFormatting,
                        .iconPNG = platform.exportIcon}),
      highlightImport_(
          {.store = highlightStore_,
           .application = platform.application,
           .panels = platform.panels,
           .reader = platform.fileReader,
           .pushMailboxMarks = [this] { return highlightService_.pushMailboxMarksToAllWindows(); },
           .syncTags =
               [this](std::set<std::string> threadIds, highlights::HighlightService::TagProgress progress) {
                 return highlightService_.syncAllTags(std::move(threadIds), std::move(progress));
               }}),
      keptHighlights_({.store = highlightStore_,
                       .files = platform.files,
                       .settings = settings_,
                       .windowManager = windowManager_,
                       .highlightImport = highlightImport_}),
      mailtoHandler_(platform.application, windowManager_, settings_, platform.clipboard),
      mcpServerManager_(settings_, platform.directories, platform.files,
                        [makeListener = platform.makeTcpListener](mcp::RPCHandler handler) {
                          return std::make_unique<mcp::MCPHTTPServer>(makeListener(), std::move(handler));
                        }),
      mcpSettings_(settings_, mcpServerManager_, platform.clipboard),
      statusIcon_({.item = platform.statusItem,
                   .settings = settings_,
                   .focus = focusManager_,
                   .visibility = visibility_,
                   .displayName = platform.programInfo.displayName,
                   .openSettings = [this] { openSettings(); },
                   .appeared = [this] { lifecycle_.openSettingsAction = [this] { openSettings(); }; }}),
      defaultEmailClient_(platform.defaultMailHelper, platform.uriLauncher, platform.programInfo),
      loginItem_(platform.loginItem), spelling_(settings_, platform.spellChecker),
      backgroundNotice_({.application = platform.application,
                         .settings = settings_,
                         .notificationCenter = platform.notifications,
                         .notifications = notificationManager_,
                         .background = platform.backgroundApplications,
                         .displayName = platform.programInfo.displayName,
                         .show = [this] { visibility_.toggleForeground(); },
                         .quit = [this] { quitting_.request(); }}),
      updates_(
          {.updater = platform.softwareUpdater,
           .settings = settings_,
           .notifications = notificationManager_,
           .formatting = platform.textFormatting,
           .programInfo = platform.programInfo,
           .clock =
               [] { return std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now()); },
           .showUpdates =
               [this] {
                 settings_.setSelectedSettingsTab(settings::SettingsTab::update);
                 openSettings();
               },
           .restart = [this] { quitting_.requestRestart(); }}),
      announcements_({.http = platform.http,
                      .network = platform.networkMonitor,
                      .application = platform.application,
                      .uriLauncher = platform.uriLauncher,
                      .settings = settings_,
                      .appVersion = platform.programInfo.shortVersion}),
      serverLocation_({.http = platform.http,
                       .settings = settings_,
                       .session = &jmapSession_,
                       .application = platform.application,
                       .panels = platform.panels}),
      keyboardShortcuts_(platform.globalShortcuts, platform.defaults),
      unsavedFiles_({highlightStore_.file(), platform.defaultsFile, sessionStore_.file(), closedTabs_.file()},
                    platform.application, platform.panels) {
  appDelegate_.setWindowManager(&windowManager_);
  takeLinks(platform);
  platform.application.setCloseQuestion([this](std::vector<std::shared_ptr<platform::Window>> windows) {
    return closeQuestion_.mayClose(std::move(windows));
  });
  if (platform.hasEnvironmentVariable(testVariable))
    return;
  scriptsManager_.resolveActiveWebView = [this] { return windowManager_.windows().frontViewModel(); };
  webServices_.addToPage = [this](const auto& tab) {
    if (settings_.isServiceOrigin(*tab->urlString))
      jmapSession_.visiblePageDidLoad();
    return scriptsManager_.pageDidFinish(tab);
  };
  keptHighlights_.start();
  startAnnouncements(platform);
  mcpServerManager_.start(
      {.mail = jmapSession_.mail(),
       .formatting = platform.textFormatting,
       .openURL = [this](const std::string& url) { windowManager_.addresses().openURL(url); },
       .activate = [&application = platform.application] { application.activate(); }});
  if (platform.programInfo.isMailApplication && settings_.get(settings::keys::defaultClientCheck)) {
    const std::chrono::seconds delay{shortestAlertDelay + platform.randomUpTo(alertDelaySpread)};
    scope_.spawn(askToBecomeDefault(delay, platform.programInfo, platform.application, platform.uriLauncher,
                                    platform.panels, settings_, lifecycle_));
  }
  updates_.start();
  base::Logger("system").notice("{}", SystemInfoManager(platform.programInfo, platform.machineInfo)
                                          .description(std::chrono::system_clock::now()));
  if (platform.startsInBackground)
    backgroundNotice_.startedInBackground();
  keyboardShortcuts_.onKeyUp(shortcuts::toggleVisibility, [this] { visibility_.toggle(); });
}

void OndrelApp::takeLinks(const PlatformAbilities& platform) {
  appDelegate_.setReceivers(
      {.openEmailLink = [this](const std::string& link) { scope_.spawn(emailLinkService_.openEmail(link)); },
       .handleMailto = [this](const base::Url& url) { mailtoHandler_.handle(url); }});
  webServices_.beginLetter = [this, &uriLauncher = platform.uriLauncher,
                              programInfo = platform.programInfo](const std::string& link) {
    const auto url = base::Url::parse(link);
    const bool isOthers = uriLauncher.defaultApplicationForScheme("mailto") &&
                          !integrations::isDefaultEmailClient(uriLauncher, programInfo);
    if (!url || isOthers)
      return false;
    mailtoHandler_.handle(*url);
    return true;
  };
}

void OndrelApp::startAnnouncements(const PlatformAbilities& platform) {
  announcements_.bringToFront = [this, &application = platform.application,
                                 startedInBackground = platform.startsInBackground] {
    // The user wants no window yet; it stands in the first one.
    if (startedInBackground && application.windows().empty())
      return;
    application.unhide();
    application.activate();
    if (const auto active = windowManager_.windows().activeWindow())
      active->first->present();
    else
      windowManager_.openMainWindow();
  };
  announcements_.start(announcementInterval);
}

std::unique_ptr<attachments::FilesViewModel>
OndrelApp::makeFilesViewModel(std::weak_ptr<platform::Window> window) {
  auto services = filesServices_;
  services.watchDownload = [this, window = std::move(window)](const auto& item) {
    runningDownloads_.add(item);
    downloadNotices_.watch(item, window);
  };
  return std::make_unique<attachments::FilesViewModel>(std::move(services));
}

void OndrelApp::openMailto(const std::string& url) {
  if (!webServices_.beginLetter(url))
    webServices_.uriLauncher.open(url);
}

void OndrelApp::openSettings() {
  webServices_.application.activate(); // first: the settings come in front of it
  if (showSettings_)
    showSettings_();
}

OndrelApp::~OndrelApp() {
  webServices_.application.setCloseQuestion(nullptr);
}

} // namespace ondrel::program
