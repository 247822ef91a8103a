#pragma once

#include "app/BrowserWindows.h"
#include "base/Event.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace ondrel::web {
struct WebServices;
}

namespace ondrel::app {

class TabOpener;

// Shows addresses that come from outside the tabs, where no letter is lost by it. Main thread only.
class AddressOpener {
 public:
  using ViewModel = std::shared_ptr<web::WindowViewModel>;

  // All outlive it.
  AddressOpener(platform::Application& application, BrowserWindows& windows, TabOpener& tabs,
                const web::WebServices& services)
      : application_(application), windows_(windows), tabs_(tabs), services_(services) {}

  // Called before windows are looked for: there may be none yet, but for a wish like this.
  void setWindowWanted(std::function<void()> handler) { windowWanted_ = std::move(handler); }

  // Shows a message of the service in the first window with mail where no letter is being written; in a new
  // tab or window when there is none. Gives the one that shows it.
  ViewModel openURL(const std::string& url);
  // In the active one of the windows where no letter is being written; none when there is none.
  ViewModel loadInActiveWindow(const std::string& url);
  ViewModel openInNewTabOrWindow(const std::string& url);
  // In a tab behind the active one, which is loaded when it is shown; none when there is no window.
  ViewModel openTabBehind(const std::string& url);

  // A tab that was there shows another address now.
  base::Event<> tabReplaced;

 private:
  using ActiveWindow = BrowserWindows::ActiveWindow;

  ViewModel showIn(const ActiveWindow& window, const std::string& url);
  ViewModel openBesideLetters(const std::string& url);
  ViewModel viewModelAt(const std::string& url) const;

  platform::Application& application_;
  BrowserWindows& windows_;
  TabOpener& tabs_;
  const web::WebServices& services_;
  std::function<void()> windowWanted_ = [] {};
};

} // namespace ondrel::app
