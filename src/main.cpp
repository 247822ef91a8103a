#include "BuildValues.h"

#include "async/sleep.h"
#include "base/Log.h"
#include "base/Translation.h"
#include "platform/linux/decoding/ChildDecoder.h"
#include "platform/linux/decoding/GtkDocumentPrinter.h"
#include "platform/linux/desktop/AutostartEntry.h"
#include "platform/linux/desktop/DefaultMailService.h"
#include "platform/linux/desktop/LauncherEntry.h"
#include "platform/linux/desktop/LinuxClipboard.h"
#include "platform/linux/desktop/LinuxUriLauncher.h"
#include "platform/linux/desktop/LogindSleep.h"
#include "platform/linux/desktop/Rendering.h"
#include "platform/linux/desktop/RunningInstance.h"
#include "platform/linux/desktop/ScriptingObject.h"
#include "platform/linux/desktop/SharedMimeTypes.h"
#include "platform/linux/files/DefaultsWatch.h"
#include "platform/linux/files/GioFileReader.h"
#include "platform/linux/files/GioNewFiles.h"
#include "platform/linux/files/GioUserFolders.h"
#include "platform/linux/files/JsonUserDefaults.h"
#include "platform/linux/files/MachineFiles.h"
#include "platform/linux/files/PosixFileStore.h"
#include "platform/linux/files/XdgDirectories.h"
#include "platform/linux/glib/GlibEventLoop.h"
#include "platform/linux/network/GioNetworkMonitor.h"
#include "platform/linux/network/GioTcpListener.h"
#include "platform/linux/network/SoupHttpClient.h"
#include "platform/linux/notifications/DesktopNotifications.h"
#include "platform/linux/packages/PackageKitUpdater.h"
#include "platform/linux/panel/StatusNotifierItem.h"
#include "platform/linux/portal/BackgroundPortal.h"
#include "platform/linux/portal/PortalShortcuts.h"
#include "platform/linux/services/BusServices.h"
#include "platform/linux/text/GlibLogSink.h"
#include "platform/linux/text/IcuTextFormatting.h"
#include "platform/linux/text/ResourceText.h"
#include "platform/linux/webkit/EngineVersion.h"
#include "platform/linux/webkit/WebKitViewFactory.h"
#include "platform/linux/windows/GrabbedShortcuts.h"
#include "platform/linux/windows/LinuxApplication.h"
#include "platform/linux/windows/LinuxPanels.h"
#include "program/OndrelApp.h"
#include "program/SystemInfoManager.h"
#include "scripts/PageScriptSource.h"
#include "settings/SettingsKeys.h"
#include "shortcuts/KeyCombinationText.h"
#include "start/CommandLine.h"
#include "start/DemoMode.h"
#include "start/HomeFolder.h"
#include "start/ProgramFolders.h"
#include "start/ReplacedProcess.h"
#include "start/RuntimeFolder.h"
#include "start/SiteFile.h"
#include "ui/UserInterface.h"
#include "ui/page/AnnouncementBanner.h"
#include "ui/page/ContentView.h"
#include "web/WebViewConfiguration.h"

#include <chrono>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>

namespace {

using namespace ondrel;

constexpr int usageError = 2;
// The name that the command has as an action of the application.
constexpr const char* toggleAction = "toggle-visibility";
constexpr std::string_view newWindowAction = "new-window";
constexpr const char* packageName = "ondrel"; // of the machine's package system
constexpr const char* backgroundOption = "--background";
constexpr const char* exportIcon = "/org/velmora/Ondrel/highlight-export-icon.png";

int complain(const std::string& problem) {
  std::fprintf(stderr, "ondrel: %s\n", problem.c_str());
  return usageError;
}

platform::ProgramInfo ownBundle(bool isDemo) {
  // The demonstration is an application of its own: it must neither take the URLs of the real one nor hand it
  // any.
  const std::string identifier = build::identifier;
  return {isDemo ? identifier + ".Demo" : identifier, build::displayName, build::shortVersion,
          build::buildNumber, !isDemo};
}

void logUnhandled(std::exception_ptr failure) {
  const base::Logger logger("system");
  try {
    std::rethrow_exception(failure);
  } catch (const std::exception& error) {
    logger.error("A task ended with an exception: {}", error.what());
  } catch (...) {
    logger.error("A task ended with an exception of an unknown type");
  }
}

unsigned randomUpTo(unsigned most) {
  std::random_device device;
  return std::uniform_int_distribution<unsigned>(0, most)(device);
}

platform::Alert temporaryHomeAlert(const std::string& folder) {
  const base::Logger logger("system");
  logger.error("HOME names no folder: everything is kept in {}, until the end", folder);
  return {base::tr("Your Home Folder Is Missing"),
          base::trFormat("HOME names no folder. Ondrel uses {} instead, which is removed when you quit, with "
                         "the settings, highlights and downloads in it. "
                         "To keep them, set HOME to a folder of yours and start Ondrel again.",
                         folder),
          platform::AlertStyle::warning,
          {base::tr("OK")}};
}

// The desktop's own files are out of reach there.
bool isSandboxed() {
  return std::filesystem::exists("/.flatpak-info");
}

// X11 gives keys to programs; elsewhere the desktop's portal does, if there is one.
std::unique_ptr<platform::GlobalShortcuts> globalShortcuts(platform::windows::LinuxApplication& application) {
  auto grabbed = std::make_unique<platform::windows::GrabbedShortcuts>();
  if (*grabbed->isAvailable())
    return grabbed;
  return std::make_unique<platform::portal::PortalShortcuts>(platform::portal::PortalShortcuts::Options{
      // TRANSLATORS: what a global shortcut does, in the settings of the desktop
      .description = base::tr("Hide the program or show it"),
      .triggerText = shortcuts::storedText,
      .useActivationToken = [&application](const std::string& token) {
        application.setActivationToken(token);
      }});
}

scripts::ConsoleRelay consoleRelay() {
  // The level of those lines.
  return platform::text::GlibLogSink::shows(base::LogLevel::debug) ? scripts::ConsoleRelay::wanted
                                                                   : scripts::ConsoleRelay::unwanted;
}

// Everything that lives from start-up to the end, made in the order in which it stands on each other.
class Program {
 public:
  Program(platform::windows::LinuxApplication& application, const platform::ProgramInfo& programInfo,
          const start::ProgramFolders& folders, settings::Site site, platform::desktop::Rendering rendering,
          const start::CommandLine& commandLine)
      : application_(application), defaults_(files_, directories_.configuration() + "/defaults.json"),
        panels_({.defaults = defaults_,
                 .directories = directories_,
                 .saveFolderKey = settings::keys::lastSaveFolder,
                 .openFolderKey = settings::keys::lastOpenFolder,
                 .keepActive = [&application] { return application.keepActive(); }}),
        webViews_(
            {.dataFolder = directories_.applicationSupport().value_or(directories_.temporary()) + "/webkit",
             .cacheFolder = directories_.cache() + "/webkit",
             .extensionFolder = folders.extension,
             .softwareRendering = rendering == platform::desktop::Rendering::software}),
        http_({.userAgent = programInfo.displayName + "/" + programInfo.shortVersion}),
        notifications_(
            {.applicationId = programInfo.identifier,
             .iconName = build::identifier,
             .applicationName = programInfo.displayName,
             .useActivationToken =
                 [&application](const std::string& token) { application.setActivationToken(token); },
             .lasting = {{.actions = G_ACTION_MAP(application.native()),
                          .defaults = defaults_,
                          .sealKey = settings::keys::notificationKey,
                          .activate =
                              [&application] {
                                g_application_activate(G_APPLICATION(application.native()));
                              }}}}),
        launcherEntry_(programInfo.identifier),
        statusItem_({.applicationId = programInfo.identifier,
                     .applicationName = programInfo.displayName,
                     .useActivationToken =
                         [&application](const std::string& token) { application.setActivationToken(token); },
                     .menuOpens = [&application] { application.panelMenuOpens(); }}),
        shortcuts_(globalShortcuts(application)), backgroundPortal_(defaults_, {"ondrel", backgroundOption}),
        autostartEntry_(files_, {.folder = directories_.autostart(),
                                 .applicationId = programInfo.identifier,
                                 .applicationName = programInfo.displayName,
                                 .command = {folders.executables + "/ondrel", backgroundOption}}),
        loginItem_(isSandboxed() ? static_cast<platform::LoginItem*>(&backgroundPortal_) : &autostartEntry_),
        updater_({.package = packageName,
                  .executable = folders.executables + "/ondrel",
                  .isSandboxed = isSandboxed(),
                  .isReplaced = platform::packages::isOwnExecutableReplaced}),
        scripting_(programInfo.identifier), decoder_(folders.decoder),
        scripts_(scripts::pageScriptSource(platform::text::resourceText, consoleRelay())),
        app_({.programInfo = programInfo,
              .machineInfo = platform::files::machineInfo(),
              .application = application,
              .defaults = defaults_,
              .defaultsFile = defaults_.file(),
              .directories = directories_,
              .files = files_,
              .fileReader = fileReader_,
              .userFolders = userFolders_,
              .newFiles = newFiles_,
              .webViews = webViews_,
              .panels = panels_,
              .uriLauncher = uriLauncher_,
              .clipboard = clipboard_,
              .cookies = webViews_.cookies(),
              .http = http_,
              .networkMonitor = networkMonitor_,
              .notifications = notifications_,
              .launcherBadge = launcherEntry_,
              .sleepMonitor = logind_,
              .scripting = scripting_,
              .statusItem = statusItem_,
              .globalShortcuts = *shortcuts_,
              .defaultMailHelper = defaultMailService_,
              .loginItem = *loginItem_,
              .spellChecker = webViews_.spelling(),
              .softwareUpdater = updater_,
              .backgroundApplications = backgroundPortal_,
              .textFormatting = textFormatting_,
              .contentTypes = contentTypes_,
              .decoder = decoder_,
              .printer = printer_,
              .exportIcon = platform::text::resourceText(exportIcon).value_or(""),
              .makeTcpListener = [] { return std::make_unique<platform::network::GioTcpListener>(); },
              .hasEnvironmentVariable =
                  [](std::string_view name) { return std::getenv(std::string(name).c_str()) != nullptr; },
              .randomUpTo = randomUpTo,
              .startsInBackground = commandLine.background,
              .startedByBus = commandLine.startedByBus},
             std::move(site), scripts_,
             [this](const web::WebServices& services) {
               return ui::contentFactory(services, [this](GtkRevealer* place) {
                 return ui::showAnnouncements(app_.announcements(), place);
               });
             }),
        interface_({.toolkitApplication = application.native(),
                    .application = application,
                    .windows = app_.windowManager(),
                    .settings = app_.settings(),
                    .webViews = webViews_,
                    .uriLauncher = uriLauncher_,
                    .mail = app_.jmapSession().mail(),
                    .mcpSettings = app_.mcpSettings(),
                    .shortcuts = app_.keyboardShortcuts(),
                    .defaultEmail = app_.defaultEmailClient(),
                    .loginItem = app_.loginItem(),
                    .spelling = app_.spelling(),
                    .userScripts = app_.userScripts(),
                    .updates = app_.updates(),
                    .desktopServices = desktopServices_,
                    .highlights = app_.highlightService().store(),
                    .highlightExport = app_.highlightExport(),
                    .highlightImport = app_.highlightImport(),
                    .removeAllHighlights = [this] { return app_.highlightService().removeAllHighlights(); },
                    .showServerLocation = [this] { app_.serverLocation().show(); },
                    .toggleVisibility = [this] { app_.visibility().toggle(); },
                    .quit = [this] { app_.quitting().request(); },
                    .programInfo = programInfo,
                    .describeSystem =
                        [programInfo] {
                          return program::SystemInfoManager(programInfo, platform::files::machineInfo())
                                     .summary(std::chrono::system_clock::now()) +
                                 "WebKitGTK: " + platform::webkit::engineVersion() + "\n";
                        },
                    .textFormatting = textFormatting_,
                    .contentTypes = contentTypes_,
                    .decoder = decoder_,
                    .makeFilesViewModel =
                        [this](std::weak_ptr<platform::Window> window) {
                          return app_.makeFilesViewModel(std::move(window));
                        },
                    .copyAppleMailLink = [this] { return app_.emailLinkService().copyAppleMailLink(); },
                    .openMailto = [this](const std::string& url) { app_.openMailto(url); },
                    .navigate =
                        [this](const std::string& url, const std::optional<std::string>& emailId) {
                          app_.emailLinkService().navigate(url, emailId);
                        }}) {
    ends_ = application.aboutToQuit.subscribe([this] { notifications_.handOver(); });
    app_.setShowSettings([this] { interface_.showSettings(); });
    app_.setHighlightSelection([this](const auto& tab) { interface_.highlightSelection(tab); });
  }

  // Tells the user when the windows are there.
  void warn(platform::Alert alert) { scope_.spawn(show(std::move(alert))); }
  // It ends to be started again.
  bool restarts() { return app_.quitting().restarts(); }

 private:
  async::Task<void> show(platform::Alert alert) {
    co_await async::sleep(std::chrono::seconds(1));
    co_await panels_.runAlert(std::move(alert), application_.frontWindow());
  }

  platform::Application& application_;
  platform::files::XdgDirectories directories_;
  platform::files::PosixFileStore files_;
  platform::files::GioFileReader fileReader_;
  platform::files::GioUserFolders userFolders_;
  platform::files::GioNewFiles newFiles_;
  platform::files::JsonUserDefaults defaults_;
  platform::files::DefaultsWatch defaultsWatch_{defaults_};
  platform::windows::LinuxPanels panels_;
  platform::desktop::LinuxUriLauncher uriLauncher_;
  platform::desktop::LinuxClipboard clipboard_;
  platform::webkit::WebKitViewFactory webViews_;
  platform::network::SoupHttpClient http_;
  platform::network::GioNetworkMonitor networkMonitor_;
  platform::notifications::DesktopNotifications notifications_;
  platform::desktop::LauncherEntry launcherEntry_;
  platform::panel::StatusNotifierItem statusItem_;
  platform::services::BusServices desktopServices_;
  const std::unique_ptr<platform::GlobalShortcuts> shortcuts_;
  platform::desktop::DefaultMailService defaultMailService_;
  platform::portal::BackgroundPortal backgroundPortal_;
  platform::desktop::AutostartEntry autostartEntry_;
  platform::LoginItem* const loginItem_;
  platform::desktop::LogindSleep logind_;
  platform::packages::PackageKitUpdater updater_;
  platform::desktop::ScriptingObject scripting_;
  platform::text::IcuTextFormatting textFormatting_;
  platform::desktop::SharedMimeTypes contentTypes_;
  platform::decoding::ChildDecoder decoder_;
  platform::decoding::GtkDocumentPrinter printer_{decoder_};
  web::PageScripts scripts_;
  program::OndrelApp app_;
  ui::UserInterface interface_;
  base::Subscription ends_;
  async::Scope scope_;
};

struct End {
  int status = EXIT_SUCCESS;
  bool restarts = false;
  std::vector<std::string> urls = {}; // for the one that is started then
};

End run(start::CommandLine commandLine, const start::ProgramFolders& folders,
        const platform::ProgramInfo& programInfo) {
  auto home = start::HomeFolder::find();
  if (!home)
    return {complain(home.error())};
  const start::RuntimeFolder runtimeFolder;
  std::unique_ptr<start::DemoMode> demo;
  if (commandLine.demo) {
    auto prepared = start::DemoMode::prepare(commandLine.demoProfile);
    if (!prepared)
      return {complain(prepared.error())};
    demo = std::move(*prepared);
  }
  platform::text::GlibLogSink::install(programInfo.identifier);
  if (commandLine.toggle && commandLine.urls.empty())
    if (const auto status =
            platform::desktop::RunningInstance(programInfo.identifier).activateAction(toggleAction))
      return {*status};
  if (!commandLine.command.empty())
    if (const auto status =
            platform::desktop::RunningInstance(programInfo.identifier).activateAction(commandLine.command))
      return {*status};
  if (demo) {
    // A second service would take the place of the one that the running program talks to.
    if (const auto status =
            platform::windows::LinuxApplication::handOver(programInfo.identifier, commandLine.urls))
      return {*status};
    if (const auto problem = demo->startService(folders.executables))
      return {complain(*problem)};
  }
  auto site = start::loadSite(folders.data);
  if (!site)
    return {complain(site.error())};

  const auto rendering = platform::desktop::chooseRendering();
  async::setUnhandledExceptionHandler(logUnhandled);

  glib::GlibEventLoop loop;
  platform::windows::LinuxApplication application({.applicationId = programInfo.identifier,
                                                   .displayName = programInfo.displayName,
                                                   .iconName = build::identifier,
                                                   .startedByBus = commandLine.startedByBus,
                                                   .startsInBackground = commandLine.background});
  std::unique_ptr<Program> program;
  const int status = application.run(std::move(commandLine.urls), [&] {
    program = std::make_unique<Program>(application, programInfo, folders, std::move(*site), rendering,
                                        commandLine);
    if (!demo && !home->temporary().empty())
      program->warn(temporaryHomeAlert(home->temporary()));
    // With a later turn, when the launch has ended. That shows a window anyway.
    if (!commandLine.command.empty() && commandLine.command != newWindowAction)
      async::EventLoop::current().post([&application, name = commandLine.command] {
        g_action_group_activate_action(G_ACTION_GROUP(application.native()), name.c_str(), nullptr);
      });
  });
  const bool restarts = (program && program->restarts()) || !application.leftOver().empty();
  program.reset();
  return {status, restarts, application.leftOver()};
}

// The name on the bus would lead the new program to this one.
int startAgain(const start::ProgramFolders& folders, const platform::ProgramInfo& programInfo,
               const std::vector<std::string>& arguments) {
  platform::desktop::giveUpName(programInfo.identifier);
  const base::Logger logger("system");
  logger.error("No restart: {}", start::becomeProgram(folders.executables + "/ondrel", arguments));
  return EXIT_FAILURE;
}

} // namespace

int main(int argc, char** argv) {
  std::setlocale(LC_ALL, "");
  // Now: the executable may be replaced while it runs.
  const auto folders = start::ProgramFolders::find(build::installedLibraries);
  base::useTranslations(folders.translations);
  auto commandLine = start::CommandLine::parse({argv + 1, argv + argc});
  if (!commandLine)
    return complain(commandLine.error());
  switch (commandLine->action) {
  case start::CommandLine::Action::printVersion:
    std::printf("%s %s (%s) %s\n", build::displayName, build::shortVersion, build::buildNumber,
                build::identifier);
    return EXIT_SUCCESS;
  case start::CommandLine::Action::printHelp:
    std::fputs(base::tr(start::usage), stdout);
    return EXIT_SUCCESS;
  case start::CommandLine::Action::run:
    break;
  }
  const auto programInfo = ownBundle(commandLine->demo);
  auto arguments = commandLine->restartArguments();
  const auto end = run(std::move(*commandLine), folders, programInfo);
  arguments.insert(arguments.end(), end.urls.begin(), end.urls.end());
  return end.restarts ? startAgain(folders, programInfo, arguments) : end.status;
}
