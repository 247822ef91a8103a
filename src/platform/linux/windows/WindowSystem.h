#pragma once

#include "async/Scope.h"
#include "platform/Application.h"
#include "platform/linux/windows/HiddenTopLevels.h"
#include "platform/linux/windows/StuckDrags.h"
#include "platform/linux/windows/TopLevelWatch.h"

#include <gtk/gtk.h>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace ondrel::platform::windows {

class TabGroupWindow;
class TabWindow;

// All windows and top-levels of the application, and who is in front. The application's windows and events
// stand on it.
class WindowSystem {
 public:
  // `application` gets the window events emitted; both must outlive this object. `activeMayHaveChanged` is
  // called when a top-level got or lost the keyboard.
  WindowSystem(Application& application, GtkApplication* native, std::function<void()> activeMayHaveChanged);
  // Windows that are still open become closed ones; nobody is told, for it is the end of the program.
  ~WindowSystem();
  WindowSystem(const WindowSystem&) = delete;
  WindowSystem& operator=(const WindowSystem&) = delete;

  void setChromeFactory(GroupChromeFactory factory) { chromeFactory_ = std::move(factory); }
  void setCloseQuestion(Application::CloseQuestion question);
  std::shared_ptr<TabWindow> makeWindow(const WindowAttributes& attributes);
  std::vector<std::shared_ptr<Window>> windows() const;
  std::vector<std::shared_ptr<Window>> orderedWindows() const;
  std::shared_ptr<Window> focusedWindow() const;
  std::shared_ptr<Window> frontWindow() const;

  bool hasKeyboard() const { return activeTopLevel() != nullptr; }
  bool anyVisible() const; // a minimised top-level counts, and one that holds no tabs
  void bringToFront();     // the top-level that was last in front, minimised or not
  void hide();
  void unhide() { hidden_.showAgain(); }
  bool isHidden() const { return hidden_.any(); }
  // From now on the window that has the keyboard is told of anew.
  void forgetKey() { lastKey_.reset(); }

  base::Subscription addKeyDownMonitor(Application::KeyMonitor monitor);

  // What windows and top-levels tell.

  std::shared_ptr<TabGroupWindow> makeGroup(const Rect& size);
  std::shared_ptr<TabGroupWindow> makeStandalone(const Rect& size); // without bars
  void willShow(TabGroupWindow& group, bool inFront);
  bool asksBeforeClosing() const { return static_cast<bool>(closeQuestion_); }
  // The user wants these to close.
  void closeAsking(const std::vector<std::shared_ptr<TabWindow>>& windows);
  void willHide(TabGroupWindow& group);
  void willClose(const std::shared_ptr<TabWindow>& window);
  void didClose(TabWindow& window);
  // The last tab has gone. Called from inside its signals, so it is destroyed with a later turn.
  void retire(TabGroupWindow& group);
  void keyMayHaveChanged();
  bool keyPressed(const KeyEvent& event); // whether a monitor consumed it

 private:
  async::Task<void> askAndClose(std::vector<std::weak_ptr<TabWindow>> windows);
  void activeTopLevelMayHaveChanged();
  GtkWindow* activeTopLevel() const { return topLevels_ ? topLevels_->active() : nullptr; }
  std::shared_ptr<TabGroupWindow> groupOf(GtkWindow* window) const;
  void moveToFront(TabGroupWindow& group);

  Application& application_;
  GtkApplication* native_;
  std::function<void()> activeMayHaveChanged_;
  GroupChromeFactory chromeFactory_;
  Application::CloseQuestion closeQuestion_;
  std::vector<std::shared_ptr<TabWindow>> windows_;     // in the order of making
  std::vector<std::shared_ptr<TabGroupWindow>> groups_; // front to back
  std::weak_ptr<Window> lastKey_;
  HiddenTopLevels hidden_;
  StuckDrags stuckDrags_;
  struct Monitors {
    std::uint64_t last = 0;
    std::map<std::uint64_t, std::shared_ptr<Application::KeyMonitor>> byId;
  };
  std::shared_ptr<Monitors> monitors_ = std::make_shared<Monitors>();
  bool ending_ = false;
  std::unique_ptr<TopLevelWatch> topLevels_; // null while it is being made
  std::optional<async::Scope> asking_;
};

} // namespace ondrel::platform::windows
