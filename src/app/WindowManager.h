#pragma once

#include "app/BrowserContent.h"
#include "app/OpenedTabs.h"
#include "app/PersistedSession.h"
#include "async/Scope.h"
#include "base/Observable.h"
#include "platform/Window.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
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

// Owner of every browser window: makes them, groups them as tabs, knows the active one, saves the session and
// restores it, and publishes what the menu commands depend on. There is one view model for each tab, a tab
// being a window in a group. Lives as long as the process. Main thread only.
class WindowManager {
 public:
  using ActiveWindow = std::pair<std::shared_ptr<platform::Window>, std::shared_ptr<web::WindowViewModel>>;

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
  void openInNewTabOrWindow(const std::string& url);
  // In the active one of the windows where no letter is being written; none when there is none.
  std::shared_ptr<web::WindowViewModel> loadInActiveWindow(const std::string& url);

  // Among the browser windows: the key window if it shows mail, else the first with mail, else the first. A
  // window that is off the screen with a letter under way is none of them.
  std::optional<ActiveWindow> activeWindow() const;
  std::shared_ptr<web::WindowViewModel> keyViewModel() const;
  std::shared_ptr<web::WindowViewModel> viewModel(const std::shared_ptr<platform::Window>& window) const;
  // Of all tabs, in the order of making.
  std::vector<std::shared_ptr<web::WindowViewModel>> viewModels() const;
  bool mainWindowContainsMail() const;
  bool hasComposeWindow() const;
  // The account in the address of any tab, for building an address of the service.
  std::optional<std::string> currentAccountParameter() const;

  // A letter that was sent or discarded is on its way: its page must live.
  bool hasLettersUnderWay() const;
  // Ends when there is none, at once if so: true when all have left, false when one came back to its user.
  async::Task<bool> lettersToLeave() const;

  void printActive();
  void exportPDFActive();
  // Reads the clipboard; clipboardFastMailURL follows a moment later.
  void refreshClipboardURL();

  // The session as it is now.
  PersistedSession snapshot() const;

  base::Observable<bool> activeURLContainsMail{false}; // the key window's page is one of the mail application
  base::Observable<bool> isConversationVisible{false}; // and shows an open conversation
  base::Observable<std::optional<std::string>>
      clipboardFastMailURL; // an address of a message on the clipboard

  std::optional<platform::Rect> lastClosedWindowFrame() const { return lastClosedWindowFrame_; }

 private:
  struct Entry {
    std::shared_ptr<platform::Window> window;
    std::shared_ptr<web::WindowViewModel> viewModel;
    std::unique_ptr<BrowserContent> content;
  };

  const Entry* entry(const platform::Window* window) const;
  std::vector<ActiveWindow> candidates() const;
  std::vector<ActiveWindow> withoutLetters() const;
  std::optional<ActiveWindow> activeOf(const std::vector<ActiveWindow>& windows) const;
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
  void windowWillClose(const std::shared_ptr<platform::Window>& window);
  std::shared_ptr<web::WindowViewModel> viewModelFor(const PersistedTab& tab) const;
  void save();
  async::Task<void> windowClosed(std::shared_ptr<platform::Window> window);
  void environmentChanged();
  bool keyDown(const platform::KeyEvent& event);
  bool selectTab(const std::string& characters);

  // Reads what activeURLContainsMail depends on, and follows the next change of it.
  void updateActiveURLContainsMail();
  void trackedValueChanged(const web::WindowViewModel* keyModel);
  void followTrackedChange();
  async::Task<void> checkConversationAndScheduleSave();
  async::Task<void> checkConversation();
  async::Task<void> saveLater();
  async::Task<void> readClipboard();

  platform::Application& application_;
  settings::AppSettings& settings_;
  SessionStore& sessionStore_;
  ClosedTabs& closedTabs_;
  platform::Clipboard& clipboard_;
  const web::WebServices& webServices_;
  BrowserContentFactory contentFactory_;

  std::vector<Entry> windowViewModels_; // in the order of making
  base::Event<> windowViewModelsChanged_;
  std::optional<platform::Rect> lastClosedWindowFrame_;
  OpenedTabs openedTabs_;
  // What the last reads for each key window depended on; each set is followed until its next change.
  std::map<const web::WindowViewModel*, std::vector<base::Subscription>> trackedReads_;
  std::vector<base::Subscription> subscriptions_;
  // What others hold of this manager: empty once it has gone.
  std::shared_ptr<WindowManager*> self_ = std::make_shared<WindowManager*>(this);
  bool hasRestored_ = false;
  bool isTerminating_ = false;
  async::TaskHandle urlSaveTask_;
  async::TaskHandle trackURLTask_;
  async::Scope scope_;
};

} // namespace ondrel::app
