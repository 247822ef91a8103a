#pragma once

#include "app/AddressOpener.h"
#include "app/BrowserWindows.h"
#include "app/ConversationWatch.h"
#include "app/CopiedLink.h"
#include "app/SessionKeeper.h"
#include "app/TabOpener.h"
#include "async/Scope.h"
#include "base/Observable.h"
#include "platform/Window.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform {
class Application;
class Clipboard;
struct KeyEvent;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::web {
class WindowViewModel;
struct WebServices;
} // namespace ondrel::web

namespace ondrel::app {

class ClosedTabs;
class SessionStore;

// The browser windows of the program: opens new ones, restores the session and what was closed, and follows
// what happens to them. Lives as long as the process. Main thread only.
class WindowManager {
 public:
  // Schedules the restoring of the session for the first turn of the main loop. Started in the background,
  // the program has no windows until one is wanted.
  WindowManager(platform::Application& application, settings::AppSettings& settings,
                SessionStore& sessionStore, ClosedTabs& closedTabs, platform::Clipboard& clipboard,
                const web::WebServices& webServices, BrowserContentFactory contentFactory,
                bool startsInBackground = false);
  ~WindowManager();

  // Brings the windows of the last run back, or opens the first one. False when that has been done. Each of
  // the others begins with it, and is content with what comes back.
  bool restoreSession();
  void openMainWindow();
  // As openMainWindow, at the frame of the browser window that was closed last.
  void reopenWindow();
  void newTab();
  // Brings back what was closed last: tabs where they were, a window as a whole.
  void reopenClosedTab();
  const base::Observable<bool>& canReopenClosedTab() const;
  BrowserWindows& windows() { return windows_; }
  const BrowserWindows& windows() const { return windows_; }
  AddressOpener& addresses() { return addresses_; }
  SessionKeeper& session() { return session_; }
  ConversationWatch& conversation() { return conversation_; }
  CopiedLink& copiedLink() { return copiedLink_; }

  void printActive();
  void exportPDFActive();
  std::optional<platform::Rect> lastClosedWindowFrame() const { return lastClosedWindowFrame_; }

 private:
  // Runs a member on the next turn of the main loop.
  void later(void (WindowManager::*work)());
  async::Task<void> onNextTurn(void (WindowManager::*work)());

  void restore() { restoreSession(); }
  void restoreWindow(const PersistedWindow& saved);
  void save() { session_.save(); }
  void windowWillClose(const std::shared_ptr<platform::Window>& window);
  async::Task<void> windowClosed(std::shared_ptr<platform::Window> window);
  void environmentChanged();
  bool keyDown(const platform::KeyEvent& event);

  platform::Application& application_;
  settings::AppSettings& settings_;
  ClosedTabs& closedTabs_;
  const web::WebServices& webServices_;

  BrowserWindows windows_;
  TabOpener tabs_;
  AddressOpener addresses_;
  SessionKeeper session_;
  ConversationWatch conversation_;
  CopiedLink copiedLink_;
  bool isRestored_ = false;
  std::optional<platform::Rect> lastClosedWindowFrame_;
  std::vector<base::Subscription> subscriptions_;
  async::Scope scope_;
};

} // namespace ondrel::app
