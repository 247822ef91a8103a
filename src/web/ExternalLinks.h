#pragma once

#include "base/Log.h"

#include <memory>
#include <optional>
#include <string>

namespace ondrel::platform {
struct NavigationAction;
}

namespace ondrel::web {

class GestureLimit;
class WindowViewModel;
struct WebServices;

// The text of an address that other programs open ("tel:", "mailto:", ...), with what engines leave raw in it
// percent-encoded; absent for what a web engine has a meaning of its own for (pages, files, scripts, data)
// and for what is no address.
std::optional<std::string> externalAddress(const std::string& url);

// Hands a tab's links to other programs over to the desktop, and those that begin a letter to this program
// where no other does that: one for each press of a key or button, and none
// that the page follows by itself. Main thread only.
class ExternalLinks {
 public:
  // `services` and `handOvers` outlive it.
  ExternalLinks(std::weak_ptr<WindowViewModel> viewModel, const WebServices& services,
                GestureLimit& handOvers);

  // True when the navigation leads to another program, whether that was opened or not: the engine has nothing
  // to load there.
  bool take(const platform::NavigationAction& action);

 private:
  void open(const std::string& url);

  const std::weak_ptr<WindowViewModel> viewModel_;
  const WebServices& services_;
  GestureLimit& handOvers_;
  const base::Logger logger_{"ui"};
};

} // namespace ondrel::web
