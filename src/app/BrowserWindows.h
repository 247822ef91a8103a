#pragma once

#include "app/BrowserContent.h"
#include "async/Task.h"
#include "base/Event.h"
#include "platform/Window.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ondrel::platform {
class Application;
}

namespace ondrel::web {
class WindowViewModel;
}

namespace ondrel::app {

// Which browser windows there are, and which of them is meant. There is one view model for each tab, a tab
// being a window in a group. Main thread only.
class BrowserWindows {
 public:
  using Window = std::shared_ptr<platform::Window>;
  using Tab = std::shared_ptr<web::WindowViewModel>;
  using ActiveWindow = std::pair<Window, Tab>;

  // The application outlives it.
  explicit BrowserWindows(platform::Application& application) : application_(application) {}

  void add(const Window& window, const Tab& tab);
  // Once it is filled. The window may have gone meanwhile.
  void setContent(const Window& window, std::unique_ptr<BrowserContent> content);
  // Out of the list before it is taken apart, which may call back; false when it is none of the list.
  bool remove(const Window& window);
  base::Event<> changed;

  Tab viewModel(const Window& window) const;
  Tab focusedViewModel() const;
  // Of the window in front of all browser windows that are on the screen.
  Tab frontViewModel() const;
  // Of all tabs, in the order of making.
  std::vector<Tab> viewModels() const;
  // Those on the screen, as the desktop stacks them.
  std::vector<ActiveWindow> shown() const;
  // Those of them in which no letter is being written.
  std::vector<ActiveWindow> shownWithoutLetters() const;
  // The key window if it shows mail, else the first with mail, else the first.
  std::optional<ActiveWindow> activeOf(const std::vector<ActiveWindow>& windows) const;
  // Of those on the screen: one that is off it with a letter under way is none of them.
  std::optional<ActiveWindow> activeWindow() const { return activeOf(shown()); }
  bool isLastShown(const Window& window) const;

  bool mainWindowContainsMail() const;
  bool hasComposeWindow() const;
  // The account in the address of the active tab, or of any other one, for building an address of the
  // service.
  std::optional<std::string> currentAccountParameter() const;

  // A letter that was sent or discarded is on its way: its page must live.
  bool hasLettersUnderWay() const;
  // Ends when there is none, at once if so: true when all have left, false when one came back to its user.
  async::Task<bool> lettersToLeave() const;

 private:
  struct Entry {
    Window window;
    Tab tab;
    std::unique_ptr<BrowserContent> content;
  };

  platform::Application& application_;
  std::vector<Entry> entries_; // in the order of making
};

} // namespace ondrel::app
