#pragma once

#include "async/Scope.h"
#include "base/Event.h"
#include "base/Observable.h"
#include "integrations/JoinedSource.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace ondrel::platform {
class Directories;
class FileReader;
class FileStore;
class UriLauncher;
class UserFolders;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::web {
class WindowViewModel;
}

namespace ondrel::integrations {

// Scripts and style sheets that the user has put into a folder, for the pages of the service. The files are
// read each time. What fails is a line in the log. Main thread only.
class ScriptsManager {
 public:
  // All outlive it.
  struct Services {
    platform::Directories& directories;
    platform::UserFolders& folders;
    platform::FileStore& files;
    platform::FileReader& reader;
    platform::UriLauncher& uriLauncher;
    settings::AppSettings& settings;
    std::string displayName;
  };
  using Tab = std::shared_ptr<web::WindowViewModel>;
  using WeakTab = std::weak_ptr<web::WindowViewModel>;

  // Longer files are left out.
  static constexpr std::size_t largestFile = std::size_t{1} << 20; // bytes

  explicit ScriptsManager(Services services);

  // Gives the tab in front of all, or null.
  std::function<Tab()> resolveActiveWebView;
  // The folder has files of that kind.
  base::Observable<bool> hasScripts{false};
  base::Observable<bool> hasCSS{false};

  // Absent where the user has no documents folder. It need not exist.
  std::optional<std::string> folder() const;
  // Looks into the folder again.
  void refresh();
  // Looks now, and whenever something comes or goes there until the subscription goes.
  base::Subscription follow();
  // Makes it, with a read-me, where it is missing.
  void openScriptsFolder();

  // Each leaves pages of others alone.
  async::Task<void> runScripts(WeakTab tab);
  async::Task<void> injectCSS(WeakTab tab);
  async::Task<void> removeCSS(WeakTab tab);
  void runScriptsInActiveWebView();
  // What is to be done with a page that has loaded just now. Belongs to the page: whoever runs it cancels it
  // when the page goes.
  async::Task<void> pageDidFinish(const Tab& tab);

  // All files of a kind in the order of their names' code points; absent when none can be read.
  async::Task<std::optional<JoinedSource>> joinedSource(std::string extension);

 private:
  async::Task<void> lookIntoFolder();
  async::Task<void> refreshLater();
  async::Task<void> applyLater(WeakTab tab, bool runs, bool injects);
  void switchCSS();
  Tab activeTab() const;

  const Services services_;
  base::Subscription settingChanges_;
  async::TaskHandle look_;
  async::TaskHandle styleSwitch_;
  async::Scope scope_;
};

} // namespace ondrel::integrations
