#include "app/FocusManager.h"

#include "app/BrowserWindows.h"
#include "platform/Application.h"
#include "settings/AppSettings.h"

#include <utility>

namespace ondrel::app {

FocusManager::FocusManager(platform::Application& application, const BrowserWindows& windows,
                           settings::AppSettings& settings, std::function<bool()> isHookmarkActive)
    : application_(application), windows_(windows), settings_(settings),
      isHookmarkActive_(std::move(isHookmarkActive)) {
  subscriptions_.push_back(application_.deactivated.subscribe([this] { deactivated(); }));
  subscriptions_.push_back(application_.activated.subscribe([this] { showHideTitle.set("Hide"); }));
}

void FocusManager::deactivated() {
  showHideTitle.set("Show");
  if (mayHide())
    application_.hide();
}

bool FocusManager::mayHide() const {
  if (isHookmarkActive_())
    return false;
  // Its name says otherwise, but with this setting the program never hides by itself.
  if (settings_.get(settings::keys::doHideWhenInComposeMode))
    return false;
  if (windows_.hasComposeWindow())
    return false;
  return settings_.get(settings::keys::hideOnLoseFocus);
}

} // namespace ondrel::app
