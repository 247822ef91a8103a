#include "app/ProgramVisibility.h"

#include "app/WindowManager.h"
#include "async/sleep.h"
#include "platform/Application.h"

#include <algorithm>

namespace ondrel::app {

void ProgramVisibility::toggle() {
  if (openedWindow())
    return;
  if (application_.isHidden())
    comeBack({});
  else
    application_.hide();
}

void ProgramVisibility::toggleForeground(async::Duration pause) {
  if (openedWindow())
    return;
  if (application_.isActive() && !application_.isHidden())
    application_.hide();
  else if (pause > async::Duration{})
    comeBack(pause);
  else
    application_.activate();
}

void ProgramVisibility::comeBack(async::Duration pause) {
  application_.unhide();
  scope_.spawn(activateAfter(pause));
}

// One that is off the screen with a letter under way doesn't count: nobody sees it.
bool ProgramVisibility::openedWindow() {
  if (std::ranges::any_of(application_.windows(), [](const auto& window) { return !window->isWithdrawn(); }))
    return false;
  application_.unhide();
  windows_.reopenWindow();
  return true;
}

async::Task<void> ProgramVisibility::activateAfter(async::Duration pause) {
  if (pause > async::Duration{}) [[maybe_unused]]
    const bool slept = co_await async::sleep(pause);
  // Hidden again meanwhile: that is what the user wants now.
  if (!application_.isHidden())
    application_.activate();
}

} // namespace ondrel::app
