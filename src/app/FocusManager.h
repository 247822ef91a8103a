#pragma once

#include "base/Event.h"
#include "base/Observable.h"

#include <functional>
#include <string>
#include <vector>

namespace ondrel::platform {
class Application;
}

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::app {

class BrowserWindows;

// Keeps the program out of the way: where the user wants it so, it hides whenever another application takes
// the foreground. Main thread only.
class FocusManager {
 public:
  // All outlive it. `isHookmarkActive` tells of the application that has just taken the foreground.
  FocusManager(platform::Application& application, const BrowserWindows& windows,
               settings::AppSettings& settings, std::function<bool()> isHookmarkActive);

  // What the command that shows and hides the program is called at present.
  base::Observable<std::string> showHideTitle{"Hide"};

 private:
  void deactivated();
  bool mayHide() const;

  platform::Application& application_;
  const BrowserWindows& windows_;
  settings::AppSettings& settings_;
  std::function<bool()> isHookmarkActive_;
  std::vector<base::Subscription> subscriptions_;
};

} // namespace ondrel::app
