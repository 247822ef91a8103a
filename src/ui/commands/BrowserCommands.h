#pragma once

#include "async/Scope.h"
#include "platform/ProgramInfo.h"
#include "ui/commands/Command.h"

#include <functional>
#include <string>
#include <vector>

namespace ondrel::app {
class WindowManager;
}

namespace ondrel::highlights {
class HighlightStore;
}

namespace ondrel::platform {
class Application;
class Window;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::ui {

class FocusedTab;

// The menu commands of the program. Outlives its table.
class BrowserCommands {
 public:
  struct Actions {
    std::function<void()> checkForUpdates;
    std::function<void(const std::string& url)> navigate; // shows a message of the service
    std::function<void()> copyAppleMailLink;              // to the message in front
    std::function<void()> highlightSelection;
    std::function<void()> showHighlights;
    std::function<void()> newMessage;
    std::function<void()> exportHighlights;
    std::function<void()> importHighlights;
    std::function<void()> removeAllHighlights;
    std::function<void()> showFiles;
    std::function<void()> showServerLocation;
    std::function<void()> toggleFullScreen;  // the top-level in front
    std::function<void(int step)> focusPane; // the next one of the top-level in front, or the one before
    std::function<void()> showSettings;
    std::function<void()> showShortcuts;
    std::function<void()> showHelp; // empty where there is none; so the next
    std::function<void()> contact;
    std::function<void()> showAbout;
    std::function<void()> toggleVisibility;
    std::function<void()> quit;
  };

  // All outlive it.
  BrowserCommands(platform::Application& application, app::WindowManager& windows,
                  settings::AppSettings& settings, highlights::HighlightStore& highlights,
                  FocusedTab& focusedTab, platform::ProgramInfo programInfo, Actions actions);

  // In the order of the menu.
  std::vector<CommandGroup> table();

 private:
  CommandGroup updates();
  CommandGroup windowsAndTabs();
  CommandGroup navigation();
  CommandGroup view();
  CommandGroup finding();
  CommandGroup printing();
  CommandGroup highlights();
  CommandGroup tools();
  CommandGroup toolbar();
  CommandGroup tabs();
  CommandGroup panes();
  CommandGroup preferences();
  CommandGroup help();
  CommandGroup program();

  Condition whenHighlighted() const;
  Condition whenMessageIsOpen() const;
  Condition whenHidingOnLoseFocus() const;
  std::function<void()> inKeyWindow(void (*work)(platform::Window& window)) const;
  std::string helpWithoutHighlights() const;
  void openCopiedLink();
  void newMaskedEmailAddress();
  void findInPage();

  platform::Application& application_;
  app::WindowManager& windows_;
  settings::AppSettings& settings_;
  highlights::HighlightStore& highlights_;
  FocusedTab& focusedTab_;
  const platform::ProgramInfo programInfo_;
  const Actions actions_;
  async::Scope scope_;
};

} // namespace ondrel::ui
