#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "base/Event.h"
#include "base/Observable.h"

#include <map>
#include <vector>

namespace ondrel::platform {
class Application;
}

namespace ondrel::web {
class WindowViewModel;
}

namespace ondrel::app {

class BrowserWindows;

// Follows what the page of the key window shows. Main thread only.
class ConversationWatch {
 public:
  // Both outlive it.
  ConversationWatch(platform::Application& application, BrowserWindows& windows);

  base::Observable<bool> activeURLContainsMail{false}; // the key window's page is one of the mail application
  base::Observable<bool> isConversationVisible{false}; // and shows an open conversation
  // What a tab in front shows, or has shown before, has changed.
  base::Event<> pageChanged;

 private:
  // Runs a member on the next turn of the main loop.
  void later(void (ConversationWatch::*work)());
  async::Task<void> onNextTurn(void (ConversationWatch::*work)());
  // Reads what activeURLContainsMail depends on, and follows the next change of it.
  void update();
  void trackedValueChanged(const web::WindowViewModel* focusedModel);
  void followTrackedChange();
  // Looks at the page of the key window, whichever that is now.
  void look();
  async::Task<void> check();
  async::Task<bool> showsConversation();

  platform::Application& application_;
  BrowserWindows& windows_;
  // What the last reads for each key window depended on; each set is followed until its next change.
  std::map<const web::WindowViewModel*, std::vector<base::Subscription>> trackedReads_;
  base::Subscription focusChanged_;
  async::TaskHandle check_;
  async::Scope scope_;
};

} // namespace ondrel::app
