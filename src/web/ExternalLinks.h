#pragma once

#include "base/Log.h"

#include <memory>
#include <optional>
#include <string>

namespace ondrel::platform {
class UriLauncher;
struct NavigationAction;
} // namespace ondrel::platform

namespace ondrel::web {

class GestureLimit;
class WindowViewModel;

// The text of an address that other programs open ("tel:", "mailto:", ...), with what engines leave raw in it
// percent-encoded; absent for what a web engine has a meaning of its own for (pages, files, scripts, data)
// and for what is no address.
std::optional<std::string> externalAddress(const std::string& url);

// Hands a tab's links to other programs over to the desktop: one for each press of a key or button, and none
// that the page follows by itself. Main thread only.
class ExternalLinks {
 public:
  // `handOvers` outlives it.
  ExternalLinks(std::weak_ptr<WindowViewModel> viewModel, platform::UriLauncher& uriLauncher,
                GestureLimit& handOvers);

  // True when the navigation leads to another program, whether that was opened or not: the engine has nothing
  // to load there.
  bool take(const platform::NavigationAction& action);

 private:
  void open(const std::string& url);

  const std::weak_ptr<WindowViewModel> viewModel_;
  platform::UriLauncher& uriLauncher_;
  GestureLimit& handOvers_;
  const base::Logger logger_{"ui"};
};

} // namespace ondrel::web
