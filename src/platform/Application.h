#pragma once

#include "async/Task.h"
#include "base/Event.h"
#include "platform/GroupChrome.h"
#include "platform/Modifiers.h"
#include "platform/Window.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::platform {

struct KeyEvent {
  bool isTab = false; // whatever it types
  Modifiers modifiers;
  std::string characters;                  // what the key types with its modifiers; empty for none
  std::string charactersIgnoringModifiers; // without all but Shift
};

// The running application: its windows, its place among others, and what happens to it. Main thread only.
class Application {
 public:
  virtual ~Application() = default;

  virtual std::shared_ptr<Window> makeWindow(const WindowAttributes& attributes) = 0;
  // Makes the chrome of each top-level from now on. Set once, before the first window.
  virtual void setChromeFactory(GroupChromeFactory factory) = 0;

  // Asked before windows close as the user wishes, of all that close with one wish: may they go? Without it
  // they may. Window::close() doesn't ask. Setting it anew ends what is being asked, without an answer.
  using CloseQuestion = std::function<async::Task<bool>(std::vector<std::shared_ptr<Window>>)>;
  virtual void setCloseQuestion(CloseQuestion question) = 0;

  // All windows that are not closed, tabs included, in the order of their making.
  virtual std::vector<std::shared_ptr<Window>> windows() const = 0;
  // Front to back; of each group the selected tab comes first.
  virtual std::vector<std::shared_ptr<Window>> orderedWindows() const = 0;
  virtual std::shared_ptr<Window>
  focusedWindow() const = 0; // has the keyboard; none when another application has it
  virtual std::shared_ptr<Window> frontWindow() const = 0; // the one in front of the program's own

  virtual void activate() = 0;
  virtual bool isActive() const = 0;
  virtual void hide() = 0;
  virtual void unhide() = 0;
  virtual bool isHidden() const = 0;
  virtual void quit() = 0;
  // The id of the application that has the foreground, where the desktop tells.
  virtual std::optional<std::string> frontmostApplicationIdentifier() const = 0;

  // Sees each key before the page and the menus; true consumes it.
  using KeyMonitor = std::function<bool(const KeyEvent&)>;
  virtual base::Subscription addKeyDownMonitor(KeyMonitor monitor) = 0;

  base::Event<> aboutToQuit; // the windows are still there
  base::Event<> deactivating;
  base::Event<> deactivated;
  base::Event<> activated;
  base::Event<std::shared_ptr<Window>> windowFocused;
  base::Event<std::shared_ptr<Window>> windowWillClose;
  base::Event<> menuOpened; // a menu with the program's commands opens
  base::Event<> screensWoke;

  // A URL event: text of any scheme, any length, handed over by the desktop or a second start.
  base::Event<const std::string&> urlReceived;
  // The user started the program again: has it visible windows?
  base::Event<bool> reopenRequested;
  base::Event<> didFinishLaunching;
};

} // namespace ondrel::platform
