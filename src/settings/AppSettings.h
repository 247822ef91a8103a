#pragma once

#include "base/Event.h"
#include "base/Observable.h"
#include "settings/SettingsKeys.h"
#include "settings/SettingsTab.h"
#include "settings/Site.h"

#include <cstdint>
#include <string>

namespace ondrel::platform {
class UserDefaults;
}

namespace ondrel::settings {

// Which of the service's two deployments the program talks to.
enum class FastmailEnvironment { production, beta };

// Typed reads of the user defaults, the site's addresses by environment, and the few facts that many parts of
// the program watch. One for the process, main thread only.
class AppSettings {
 public:
  AppSettings(platform::UserDefaults& defaults, Site site);

  bool get(const Key<bool>& key) const;
  void set(const Key<bool>& key, bool value);
  double get(const Key<double>& key) const;
  void set(const Key<double>& key, double value);
  platform::UserDefaults& defaults() const { return defaults_; }

  const Site& site() const { return site_; }

  // Computed at each use: beta exactly when the stored text is beta's web application; all else is
  // production.
  FastmailEnvironment currentEnvironment() const;
  // Stores the choice; whoever lets the user choose emits fastmailEnvironmentDidChange afterwards.
  void setEnvironment(FastmailEnvironment environment);
  const std::string& webAppBaseURL(FastmailEnvironment environment) const;
  const std::string& jmapSessionURL(FastmailEnvironment environment) const;
  // Of the current environment.
  const std::string& baseURL() const { return webAppBaseURL(currentEnvironment()); }
  // The address belongs to the web application of either environment.
  bool isServiceOrigin(const std::string& origin) const;

  // A stored value that no control could have made counts as none.
  double defaultPageZoom() const;
  std::string highlightTagName() const;
  std::int64_t mcpServerPort() const;
  SettingsTab selectedSettingsTab() const;
  void setSelectedSettingsTab(SettingsTab tab);

  base::Event<> fastmailEnvironmentDidChange;    // the stored value is new already
  base::Observable<std::int64_t> unreadCount{0}; // unread mail in the inbox

 private:
  platform::UserDefaults& defaults_;
  Site site_;
};

} // namespace ondrel::settings
