#include "program/DefaultClientAlert.h"

#include "async/sleep.h"
#include "base/Translation.h"
#include "integrations/DefaultEmailClient.h"
#include "platform/Application.h"
#include "platform/Panels.h"
#include "platform/UriLauncher.h"
#include "program/AppLifecycleService.h"
#include "settings/AppSettings.h"

namespace ondrel::program {

async::Task<void> askToBecomeDefault(std::chrono::seconds delay, platform::ProgramInfo programInfo,
                                     platform::Application& application, platform::UriLauncher& uriLauncher,
                                     platform::Panels& panels, settings::AppSettings& settings,
                                     AppLifecycleService& lifecycle) {
  co_await async::sleep(delay);
  // Without settings to go to, the question would lead nowhere; without a window it would come from nowhere.
  if (!lifecycle.openSettingsAction || !application.frontWindow() ||
      integrations::isDefaultEmailClient(uriLauncher, programInfo))
    co_return;
  platform::Alert alert{base::trFormat("{} is not your default email app", programInfo.displayName),
                        base::tr("Would you like to go to Settings to change this now?"),
                        platform::AlertStyle::informational,
                        {base::tr("Yes"), base::tr("Not Now")}};
  const auto response = co_await panels.runAlert(std::move(alert), application.frontWindow());
  if (response == platform::Panels::firstButton) {
    settings.setSelectedSettingsTab(settings::SettingsTab::general);
    application.activate();
    lifecycle.openSettingsAction();
  }
  settings.set(settings::keys::defaultClientCheck, false);
}

} // namespace ondrel::program
