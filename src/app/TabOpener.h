#pragma once

#include "app/BrowserContent.h"
#include "app/OpenedTabs.h"
#include "async/Scope.h"

#include <memory>
#include <string_view>

namespace ondrel::platform {
class Application;
class Window;
} // namespace ondrel::platform

namespace ondrel::web {
class WindowViewModel;
struct WebServices;
} // namespace ondrel::web

namespace ondrel::app {

class BrowserWindows;

// Makes the windows of tabs and puts them beside others. Main thread only.
class TabOpener {
 public:
  using Window = std::shared_ptr<platform::Window>;
  using ViewModel = std::shared_ptr<web::WindowViewModel>;

  static constexpr std::string_view tabbingIdentifier = "ondrel";

  // All outlive it; what it makes is added to `windows`.
  TabOpener(platform::Application& application, BrowserWindows& windows, const web::WebServices& services,
            BrowserContentFactory contentFactory);

  ViewModel newViewModel() const;
  // Builds the window of a view model and registers it; doesn't show it.
  Window makeWindow(const ViewModel& viewModel);
  void showAlone(const Window& window, bool activate = true);
  Window openTab(const ViewModel& viewModel, const Window& neighbour, bool activate);
  // Behind what has been opened from there since its tab came to the front.
  void openFrom(const Window& opener, const ViewModel& viewModel, bool activate);
  // The tab has come to the front.
  void didFocus(const Window& window) { openedTabs_.didBecomeKey(window); }

 private:
  platform::Application& application_;
  BrowserWindows& windows_;
  const web::WebServices& services_;
  BrowserContentFactory contentFactory_;
  OpenedTabs openedTabs_;
  // What its view models hold of it: empty once it has gone.
  std::shared_ptr<TabOpener*> self_ = std::make_shared<TabOpener*>(this);
  async::Scope scope_;
};

} // namespace ondrel::app
