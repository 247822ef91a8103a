#pragma once

#include "platform/Bundle.h"
#include "ui/BrowserChrome.h"
#include "ui/BrowserCommands.h"
#include "ui/CommandActions.h"
#include "ui/CopiedLinkWatch.h"
#include "ui/KeyTab.h"
#include "ui/PrimaryMenu.h"

#include <functional>
#include <string>
#include <vector>

namespace ondrel::ui {

// The interface around the pages, for the life of the process: commands with their keys, the menu, and the
// bar of each top-level. Made after the application has started and before the first window.
class UserInterface {
 public:
  struct Services {
    GtkApplication* toolkitApplication;
    platform::Application& application;
    app::WindowManager& windows;
    settings::AppSettings& settings;
    platform::Bundle bundle;
    std::function<void(const std::string& url)> navigate; // shows a message of the service
  };

  explicit UserInterface(const Services& services);
  UserInterface(const UserInterface&) = delete;
  UserInterface& operator=(const UserInterface&) = delete;

  const std::vector<CommandGroup>& commands() const { return groups_; }

 private:
  GtkWindow* activeWindow() const;

  const Services services_;
  KeyTab keyTab_;
  BrowserCommands commands_;
  const std::vector<CommandGroup> groups_;
  const CommandActions actions_;
  const PrimaryMenu menu_;
  const ChromeServices chrome_;
  const CopiedLinkWatch copiedLink_;
};

} // namespace ondrel::ui
