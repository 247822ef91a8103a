#include "ui/UserInterface.h"

#include "app/WindowManager.h"
#include "platform/Application.h"
#include "settings/AppSettings.h"
#include "ui/AboutWindow.h"
#include "ui/ShortcutsWindow.h"
#include "ui/Style.h"

namespace ondrel::ui {

UserInterface::UserInterface(const Services& services)
    : services_(services), keyTab_(services_.application, services_.windows),
      commands_(services_.application, services_.windows, services_.settings, keyTab_, services_.bundle,
                {.navigate = services_.navigate,
                 .showShortcuts = [this] { presentShortcuts(groups_, activeWindow()); },
                 .showAbout =
                     [this] {
                       presentAbout(services_.bundle, services_.settings.site().projectSiteURL,
                                    activeWindow());
                     }}),
      groups_(commands_.table()), actions_(services_.toolkitApplication, groups_), menu_(groups_),
      chrome_{services_.settings, menu_,
              [this](const auto& window) { return services_.windows.viewModel(window); },
              [this] { services_.windows.newTab(); },
              [this] { services_.application.menuDidBeginTracking.emit(); }},
      copiedLink_(services_.application, services_.windows) {
  installStyle();
  services_.application.setChromeFactory([this] { return std::make_unique<BrowserChrome>(chrome_); });
}

GtkWindow* UserInterface::activeWindow() const {
  return gtk_application_get_active_window(services_.toolkitApplication);
}

} // namespace ondrel::ui
