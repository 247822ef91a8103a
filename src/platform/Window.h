#pragma once

#include "base/Event.h"
#include "platform/NativeView.h"

#include <memory>
#include <string>
#include <vector>

namespace ondrel::platform {

// In screen coordinates, in the platform's own direction and units. Where the desktop doesn't tell positions
// (Wayland) x and y are 0 and ignored.
struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  bool operator==(const Rect&) const = default;
};

enum class TabbingMode { automatic = 0, preferred = 1, disallowed = 2 };

class Window;

// The windows that share one top-level as tabs, in the order of the tabs. A lone window is in a group of its
// own or in none; the platform says.
class WindowGroup {
 public:
  virtual ~WindowGroup() = default;
  virtual std::vector<std::shared_ptr<Window>> windows() const = 0;
  virtual std::shared_ptr<Window> selectedWindow() const = 0;
};

// One window in the model, which the user sees as one tab. It has an identity of its own and moves between
// groups. A closed window keeps its last frame and ignores everything else. Main thread only.
class Window {
 public:
  virtual ~Window() = default;

  virtual std::string identifier() const = 0; // "ondrel-browser", "files", ...
  virtual void
  setTitle(const std::string& title) = 0; // of the tab, and of the top-level while it is in front
  virtual void setBusy(bool busy) = 0;    // a load is running
  // The view that fills the tab; the window keeps it alive.
  virtual void setContent(NativeView view) = 0;

  virtual Rect frame() const = 0;
  virtual void setFrame(const Rect& frame) = 0;
  // The top-level fills its monitor; its frame is what it goes back to.
  virtual bool isMaximized() const = 0;
  virtual void maximize() = 0;

  virtual TabbingMode tabbingMode() const = 0;
  virtual void setTabbingMode(TabbingMode mode) = 0;
  virtual std::string tabbingIdentifier() const = 0;
  virtual void setTabbingIdentifier(const std::string& identifier) = 0;

  // Puts `window` directly behind this one in this one's group, without selecting it. A standalone window
  // takes no tabs: the other one then shows in a top-level of its own.
  virtual void addTabbedWindow(std::shared_ptr<Window> window) = 0;
  // The group that it is a tab of; none when it has no tabs beside it.
  virtual std::shared_ptr<WindowGroup> tabGroup() const = 0;
  virtual void selectNextTab() = 0; // wraps around
  virtual void selectPreviousTab() = 0;

  virtual void present() = 0;
  virtual void showUnfocused() = 0; // shows it without taking the keyboard
  // Takes it off the screen and out of its tabs while its content lives on. Ordered to the front again it is
  // back in its place among them, or alone where they have gone.
  virtual void withdraw() = 0;
  virtual bool isWithdrawn() const = 0;
  virtual bool
  isVisible() const = 0; // on screen as the selected tab of a top-level that is neither hidden nor minimised
  virtual bool isMinimized() const = 0;
  virtual void unminimize() = 0;

  // Asks as the user would; close() does not ask.
  virtual void requestClose() = 0;
  virtual void close() = 0;
};

struct WindowAttributes {
  double contentWidth = 870;
  double contentHeight = 768;
  std::string tabbingIdentifier;
  std::string identifier;
  // Neither a tab nor a place for tabs: a top-level of its own, whose content brings the bar at its top.
  bool standalone = false;
};

} // namespace ondrel::platform
