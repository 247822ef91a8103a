#include "integrations/BackgroundNotice.h"

#include "base/Translation.h"
#include "jmap/newmail/NotificationManager.h"
#include "platform/Application.h"
#include "platform/desktop/BackgroundApplications.h"
#include "settings/AppSettings.h"

#include <algorithm>
#include <utility>

namespace ondrel::integrations {

namespace {

constexpr const char* category = "background";
constexpr const char* quitAction = "quit";
// TRANSLATORS: what the program does, in the desktop's list of background applications
constexpr const char* status = base::trMark("Watching for new mail");

} // namespace

BackgroundNotice::BackgroundNotice(Services services) : services_(std::move(services)) {
  // TRANSLATORS: a button of a notification: end the program
  services_.notifications.registerCategory({category, {{quitAction, base::tr("Quit")}}});
  services_.notifications.setResponseHandler(
      category, [this](const platform::NotificationResponse& response) {
        (response.actionIdentifier == quitAction ? services_.quit : services_.show)();
      });
  subscriptions_.push_back(
      services_.application.windowWillClose.subscribe([this](const auto&) { scope_.spawn(windowClosed()); }));
  subscriptions_.push_back(services_.application.aboutToQuit.subscribe([this] { isQuitting_ = true; }));
}

void BackgroundNotice::startedInBackground() {
  services_.background.setStatus(base::tr(status));
}

// One that is off the screen with a letter under way doesn't count: nobody sees it.
bool BackgroundNotice::hasWindow() const {
  return std::ranges::any_of(services_.application.windows(),
                             [](const auto& window) { return !window->isWithdrawn(); });
}

// On a later turn than the event, when the window has gone.
async::Task<void> BackgroundNotice::windowClosed() {
  if (isQuitting_ || hasWindow())
    co_return;
  services_.background.setStatus(base::tr(status));
  if (!services_.settings.get(settings::keys::backgroundNoticeShown))
    co_await tell();
}

async::Task<void> BackgroundNotice::tell() {
  // Where nobody shows notifications there may be somebody another time.
  const auto authorized = co_await services_.notificationCenter.authorizationStatus();
  if (authorized != platform::AuthorizationStatus::authorized || isQuitting_ || hasWindow())
    co_return;
  services_.settings.set(settings::keys::backgroundNoticeShown, true);
  co_await services_.notifications.send(
      base::trFormat("{} runs in the background", services_.displayName),
      base::tr("It goes on telling you of new mail. Start it again to see its windows."), category, {});
}

} // namespace ondrel::integrations
