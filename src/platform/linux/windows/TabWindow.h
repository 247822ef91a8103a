#pragma once

#include "platform/Window.h"
#include "platform/linux/glib/Ref.h"

#include <adwaita.h>

#include <memory>

namespace ondrel::platform::windows {

class TabGroupWindow;
class WindowSystem;

// One window of the model: a page of a tab view. It is in no top-level until it is shown or added to a group.
class TabWindow final : public Window, public std::enable_shared_from_this<TabWindow> {
 public:
  // `system` is left alone once the window is closed.
  TabWindow(WindowSystem& system, const WindowAttributes& attributes);
  ~TabWindow() override;

  std::string identifier() const override { return identifier_; }
  void setTitle(const std::string& title) override;
  void setBusy(bool busy) override;
  void setContent(NativeView view) override;

  Rect frame() const override;
  void setFrame(const Rect& frame) override;
  bool isMaximized() const override;
  void maximize() override;

  TabbingMode tabbingMode() const override { return tabbingMode_; }
  void setTabbingMode(TabbingMode mode) override { tabbingMode_ = mode; }
  std::string tabbingIdentifier() const override { return tabbingIdentifier_; }
  void setTabbingIdentifier(const std::string& identifier) override { tabbingIdentifier_ = identifier; }

  void addTabbedWindow(std::shared_ptr<Window> window) override;
  std::shared_ptr<WindowGroup> tabGroup() const override;
  void selectNextTab() override;
  void selectPreviousTab() override;

  void present() override;
  void showUnfocused() override;
  void withdraw() override;
  bool isWithdrawn() const override { return isOrderedOut_; }
  bool isVisible() const override;
  bool isMinimized() const override;
  void unminimize() override;

  void requestClose() override;
  void close() override;

  // The rest is for the top-levels.

  // Null for a page that is none of ours, or one that is closed.
  static TabWindow* of(AdwTabPage* page);

  bool isClosed() const { return state_ == State::closed; }
  const std::string& title() const { return title_; }
  AdwTabPage* page() const { return page_.get(); } // null while in no top-level
  GtkWidget* container() const { return container_.get(); }
  bool isStandalone() const { return standalone_; }
  std::shared_ptr<TabGroupWindow> group() const { return group_.lock(); }

  void didAttach(std::shared_ptr<TabGroupWindow> group, AdwTabPage* page);
  // Left its group: for another one, or for good when the close has begun.
  void didDetach();
  // The user is being asked whether it may close; false when that is so already, or it is closed.
  bool beginAsking();
  void endAsking() { asking_ = false; }
  // close() was called: its page in the tab view goes without a question.
  bool closesUnasked() const { return closesUnasked_; }
  // The beginning of the end, by whatever way: tells the application once.
  void beginClose();
  // The application ends: closed without telling anybody.
  void abandon();

 private:
  enum class State { open, closing, closed };
  void finishClose();
  void letGo();
  std::shared_ptr<TabGroupWindow> ensureGroup();
  void comeBack();

  WindowSystem* system_;
  const std::string identifier_;
  const bool standalone_;
  std::string tabbingIdentifier_;
  TabbingMode tabbingMode_ = TabbingMode::automatic;
  std::string title_;
  bool busy_ = false;
  Rect lastFrame_;           // while in no top-level
  bool frameWasSet_ = false; // by setFrame: a place as well as a size
  bool isMaximized_ = false; // while in no top-level, as the frame
  bool closesOnceDropped_ = false;
  bool isDragged_ = false; // its page is in no tab view until it is dropped
  State state_ = State::open;
  bool asking_ = false;
  bool closesUnasked_ = false;
  glib::Ref<GtkWidget> container_; // the page's child: cheap, whatever the content is
  glib::Ref<AdwTabPage> page_;
  std::weak_ptr<TabGroupWindow> group_;

  bool isOrderedOut_ = false;
  std::weak_ptr<TabGroupWindow> formerGroup_; // which it left for that, and its place there
  int formerPosition_ = 0;
};

// The top-level that shows the window; null when there is none.
GtkWindow* topLevelOf(const std::shared_ptr<Window>& window);

} // namespace ondrel::platform::windows
