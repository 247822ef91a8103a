#pragma once

#include <string>

namespace ondrel::base {
class Url;
}

namespace ondrel::platform {
struct NavigationAction;
struct NavigationResponse;
} // namespace ondrel::platform

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::web {

// Where a tab stands when its page wants to go somewhere.
struct PageAtNavigation {
  const settings::AppSettings& settings;
  std::string url; // of the page that is shown; empty for none
  bool isWritingLetter = false;
};

// What is done with what a page wants to show: it goes there, nothing happens, it becomes a download, or it
// opens in a window or tab of its own or in the desktop's program for it.
enum class NavigationUse { allow, cancel, download, window, tab, desktop };

struct NavigationDecision {
  NavigationUse use = NavigationUse::cancel;
  bool activates = false; // the window or tab comes to the front

  bool operator==(const NavigationDecision&) const = default;
};

// Of links to other programs see ExternalLinks.
NavigationDecision decideNavigation(const platform::NavigationAction& action, const PageAtNavigation& page);
// allow, cancel or download.
NavigationUse decideResponse(const platform::NavigationResponse& response);

// Where a page opens that isn't to show in its tab: window, tab or desktop.
NavigationUse placeOf(const base::Url& url, const settings::AppSettings& settings);
// The address is of what messages bring with them.
bool isUserContent(const base::Url& url, const settings::AppSettings& settings);
// A load that the program starts passes by the engine's checks of what a page may link to (files of this
// machine, scripts): only addresses of the web are opened for a page. The rest stays with the engine.
bool isWebAddress(const std::string& address);

} // namespace ondrel::web
