#include "program/DefaultClientAlert.h"

#include "async/sleep.h"
#include "platform/Application.h"
#include "platform/Panels.h"
#include "platform/Workspace.h"
#include "program/AppLifecycleService.h"
#include "settings/AppSettings.h"

namespace ondrel::program {

bool isDefaultEmailClient(const platform::Workspace& workspace, const platform::Bundle& bundle) {
  const auto handler = workspace.defaultApplicationForScheme("mailto");
  return handler && !bundle.identifier.empty() && *handler == bundle.identifier;
}

async::Task<void> askToBecomeDefault(std::chrono::seconds delay, platform::Bundle bundle,
                                     platform::Application& application, platform::Workspace& workspace,
                                     platform::Panels& panels, settings::AppSettings& settings,
                                     AppLifecycleService& lifecycle) {
  co_await async::sleep(delay);
  if (isDefaultEmailClient(workspace, bundle))
    co_return;
  platform::Alert alert{bundle.displayName + " is not your default email app",
                        "Would you like to go to Settings to change this now?",
                        platform::AlertStyle::informational,
                        {"Yes", "Not Now"}};
  const auto response = co_await panels.runAlert(std::move(alert), application.mainWindow());
  if (response == platform::Panels::firstButton) {
    settings.setSelectedSettingsTab(settings::SettingsTab::general);
    application.activateIgnoringOtherApps();
    if (lifecycle.openSettingsAction)
      lifecycle.openSettingsAction();
  }
  settings.set(settings::keys::defaultClientCheck, false);
}

} // namespace ondrel::program
