#pragma once

#include "base/Event.h"
#include "platform/desktop/StatusItem.h"

#include <functional>
#include <string>
#include <vector>

namespace ondrel::app {
class FocusManager;
class ProgramVisibility;
} // namespace ondrel::app

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::integrations {

// The program's icon in the panel, for as long as the user wants one: tells of unread mail, and shows, hides
// and sets up the program. Main thread only.
class StatusIcon {
 public:
  struct Services {
    // All outlive it.
    platform::StatusItem& item;
    settings::AppSettings& settings;
    app::FocusManager& focus;
    app::ProgramVisibility& visibility;
    std::string displayName;
    std::function<void()> openSettings; // in front of everything
    std::function<void()> appeared;     // the icon was inserted
  };
  explicit StatusIcon(Services services);

 private:
  void followSetting();
  void updateFace();
  void updateMenu();

  const Services services_;
  std::vector<base::Subscription> subscriptions_;
};

} // namespace ondrel::integrations
