#pragma once

#include "app/BrowserContent.h"
#include "app/BrowserWindows.h"
#include "app/ConversationWatch.h"
#include "app/CopiedLink.h"
#include "app/OpenedTabs.h"
#include "app/SessionKeeper.h"
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

// Makes every browser window, groups them as tabs and shows in them what is asked for; restores the session
// and what was closed. Lives as long as the process. Main thread only.
class WindowManager {
 public:
  // Schedules the restoring of the session for the first turn of the main loop.
  WindowManager(platform::Application& application, settings::AppSettings& settings,
                SessionStore& sessionStore, ClosedTabs& closedTabs, platform::Clipboard& clipboard,
                const web::WebServices& webServices, BrowserContentFactory contentFactory);
  ~WindowManager();

  // Builds the window of a view model and registers it; doesn't show it.
  std::shared_ptr<platform::Window> makeWindow(const std::shared_ptr<web::WindowViewModel>& viewModel);
  void openMainWindow();
  // As openMainWindow, at the frame of the browser window that was closed last.
  void reopenWindow();
  void newTab();
  // Brings back what was closed last: tabs where they were, a window as a whole.
  void reopenClosedTab();
  const base::Observable<bool>& canReopenClosedTab() const;
  // Shows a message of the service in the first window with mail where no letter is being written; in a new
  // tab or window when there is none. Gives the one that shows it.
  std::shared_ptr<web::WindowViewModel> openURL(const std::string& url);
  std::shared_ptr<web::WindowViewModel> openInNewTabOrWindow(const std::string& url);
  // In a tab behind the active one, which is loaded when it is shown; none when there is no window.
  std::shared_ptr<web::WindowViewModel> openTabBehind(const std::string& url);
  // In the active one of the windows where no letter is being written; none when there is none.
  std::shared_ptr<web::WindowViewModel> loadInActiveWindow(const std::string& url);

  BrowserWindows& windows() { return windows_; }
  const BrowserWindows& windows() const { return windows_; }
  SessionKeeper& session() { return session_; }
  ConversationWatch& conversation() { return conversation_; }
  CopiedLink& copiedLink() { return copiedLink_; }

  void printActive();
  void exportPDFActive();
  std::optional<platform::Rect> lastClosedWindowFrame() const { return lastClosedWindowFrame_; }

 private:
  using ActiveWindow = BrowserWindows::ActiveWindow;

  std::shared_ptr<web::WindowViewModel> openBesideLetters(const std::string& url);
  std::shared_ptr<web::WindowViewModel> showIn(const ActiveWindow& window, const std::string& url);
  std::shared_ptr<web::WindowViewModel> newViewModel() const;
  void showAlone(const std::shared_ptr<platform::Window>& window, bool activate = true);
  std::shared_ptr<platform::Window> openTab(const std::shared_ptr<web::WindowViewModel>& viewModel,
                                            const std::shared_ptr<platform::Window>& neighbour,
                                            bool activate);

  // Runs a member on the next turn of the main loop.
  void later(void (WindowManager::*work)());
  async::Task<void> onNextTurn(void (WindowManager::*work)());

  void restore();
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
  BrowserContentFactory contentFactory_;

  BrowserWindows windows_;
  SessionKeeper session_;
  ConversationWatch conversation_;
  CopiedLink copiedLink_;
  std::optional<platform::Rect> lastClosedWindowFrame_;
  OpenedTabs openedTabs_;
  std::vector<base::Subscription> subscriptions_;
  // What others hold of this manager: empty once it has gone.
  std::shared_ptr<WindowManager*> self_ = std::make_shared<WindowManager*>(this);
  async::Scope scope_;
};

} // namespace ondrel::app
