#include "ui/UserInterface.h"

#include "app/WindowManager.h"
#include "base/Translation.h"
#include "highlights/HighlightExport.h"
#include "highlights/HighlightImport.h"
#include "integrations/SupportMail.h"
#include "integrations/UpdateManager.h"
#include "platform/Application.h"
#include "platform/UriLauncher.h"
#include "settings/AppSettings.h"
#include "ui/AboutWindow.h"
#include "ui/commands/PaneFocus.h"
#include "ui/commands/ShortcutsWindow.h"
#include "ui/widgets/Style.h"

namespace ondrel::ui {

UserInterface::UserInterface(const Services& services)
    : services_(services), focusedTab_(services_.application, services_.windows),
      highlightSelection_(focusedTab_),
      highlightsWindow_(
          {.application = services_.application,
           .webViews = services_.webViews,
           .defaults = services_.settings.defaults(),
           .store = services_.highlights,
           .highlightExport = services_.highlightExport,
           .exportHighlights = [this] { scope_.spawn(services_.highlightExport.exportHighlights()); },
           .navigate = services_.navigate}),
      exportProgress_({.title = base::tr("Exporting Highlights"),
                       .progress = services_.highlightExport.progress(),
                       .stop = [this] { services_.highlightExport.stop(); }},
                      [this] { return activeWindow(); }),
      importProgress_({.title = base::tr("Importing Highlights"),
                       .progress = services_.highlightImport.progress(),
                       .stop = [this] { services_.highlightImport.stop(); }},
                      [this] { return activeWindow(); }),
      filePanel_({.application = services_.application,
                  .decoder = services_.decoder,
                  .launcher = services_.uriLauncher,
                  .defaults = services_.settings.defaults(),
                  .types = services_.contentTypes},
                 [this] { return filesWindow_.native(); }),
      filesWindow_({.application = services_.application,
                    .defaults = services_.settings.defaults(),
                    .formatting = services_.textFormatting,
                    .preview = filePanel_,
                    .launcher = services_.uriLauncher,
                    .makeViewModel = services_.makeFilesViewModel}),
      settingsWindow_({.settings = services_.settings,
                       .mail = services_.mail,
                       .mcp = services_.mcpSettings,
                       .shortcuts = services_.shortcuts,
                       .defaultEmail = services_.defaultEmail,
                       .loginItem = services_.loginItem,
                       .spelling = services_.spelling,
                       .userScripts = services_.userScripts,
                       .updates = services_.updates,
                       .desktopServices = services_.desktopServices,
                       .openURL = [this](const std::string& url) { services_.uriLauncher.open(url); },
                       .openMailto = services_.openMailto},
                      services_.toolkitApplication, [this] { return activeWindow(); }),
      commands_(services_.application, services_.windows, services_.settings, services_.highlights,
                focusedTab_, services_.programInfo, commandActions()),
      groups_(commands_.table()), actions_(services_.toolkitApplication, groups_), menu_(groups_),
      chrome_{menu_,
              services_.settings,
              [this](const auto& window) { return services_.windows.windows().viewModel(window); },
              [this] { services_.windows.newTab(); },
              [this] { services_.application.menuOpened.emit(); },
              groups_},
      copiedLink_(services_.application, services_.windows) {
  installStyle();
  services_.application.setChromeFactory([this] { return std::make_unique<BrowserChrome>(chrome_); });
}

BrowserCommands::Actions UserInterface::commandActions() {
  const auto& site = services_.settings.site();
  std::function<void()> showHelp;
  if (!site.projectSiteURL.empty())
    showHelp = [this, url = site.projectSiteURL] { services_.uriLauncher.open(url); };
  std::function<void()> contact;
  if (!site.supportAddress.empty())
    contact = [this, url = integrations::supportMailURL(site.supportAddress, integrations::contactSubject)] {
      services_.openMailto(url);
    };
  return {.checkForUpdates = [this] { checkForUpdates(); },
          .navigate = [this](const std::string& url) { services_.navigate(url, std::nullopt); },
          .copyAppleMailLink = [this] { scope_.spawn(services_.copyAppleMailLink()); },
          .highlightSelection = [this] { highlightSelection_.perform(); },
          .showHighlights =
              [this] {
                services_.windows.restoreSession();
                highlightsWindow_.show();
              },
          // In this program, whichever the desktop opens letters with.
          .newMessage = [this] { services_.application.urlReceived.emit("mailto:"); },
          .exportHighlights = [this] { scope_.spawn(services_.highlightExport.exportHighlights()); },
          .importHighlights = [this] { scope_.spawn(services_.highlightImport.importHighlights()); },
          .removeAllHighlights = [this] { scope_.spawn(services_.removeAllHighlights()); },
          .showFiles =
              [this] {
                services_.windows.restoreSession();
                filesWindow_.show();
              },
          .showServerLocation = services_.showServerLocation,
          .toggleFullScreen = [this] { toggleFullScreen(); },
          .focusPane = [this](int step) { focusPane(activeWindow(), step); },
          .showSettings = [this] { settingsWindow_.show(); },
          .showShortcuts = [this] { presentShortcuts(groups_, activeWindow()); },
          .showHelp = std::move(showHelp),
          .contact = std::move(contact),
          .showAbout =
              [this] {
                presentAbout(services_.programInfo, services_.settings.site().projectSiteURL,
                             services_.describeSystem(), activeWindow());
              },
          .toggleVisibility = services_.toggleVisibility,
          .quit = services_.quit};
}

// The answer shows where the settings for it are.
void UserInterface::checkForUpdates() {
  services_.settings.setSelectedSettingsTab(settings::SettingsTab::update);
  showSettings();
  services_.updates.checkForUpdates();
}

void UserInterface::toggleFullScreen() const {
  if (auto* window = activeWindow())
    (gtk_window_is_fullscreen(window) ? gtk_window_unfullscreen : gtk_window_fullscreen)(window);
}

GtkWindow* UserInterface::activeWindow() const {
  return gtk_application_get_active_window(services_.toolkitApplication);
}

} // namespace ondrel::ui
