#include "app/TabOpener.h"

#include "app/BrowserWindows.h"
#include "platform/Application.h"
#include "web/WebServices.h"
#include "web/WindowViewModel.h"

#include <utility>

namespace ondrel::app {

using platform::TabbingMode;

namespace {

constexpr std::string_view windowIdentifier = "ondrel-browser";

// A lone window is shown with tabs disallowed, which stops the platform from merging it into a group on its
// own, and may be merged by the user from the next turn on.
async::Task<void> preferTabs(std::weak_ptr<platform::Window> weakWindow) {
  if (const auto window = weakWindow.lock())
    window->setTabbingMode(TabbingMode::preferred);
  co_return;
}

} // namespace

TabOpener::TabOpener(platform::Application& application, BrowserWindows& windows,
                     const web::WebServices& services, BrowserContentFactory contentFactory)
    : application_(application), windows_(windows), services_(services),
      contentFactory_(std::move(contentFactory)) {
}

TabOpener::ViewModel TabOpener::newViewModel() const {
  return web::WindowViewModel::make(services_);
}

TabOpener::Window TabOpener::makeWindow(const ViewModel& viewModel) {
  const std::weak_ptr weakSelf = self_;
  viewModel->openInNewWindow = [weakSelf](const ViewModel& opened, bool activate) {
    if (const auto self = weakSelf.lock())
      (*self)->showAlone((*self)->makeWindow(opened), activate);
  };
  viewModel->openInNewTab = [weakSelf](const ViewModel& opened, bool activate) {
    const auto self = weakSelf.lock();
    if (!self)
      return;
    if (const auto focused = (*self)->application_.focusedWindow())
      (*self)->openFrom(focused, opened, activate);
    else
      (*self)->showAlone((*self)->makeWindow(opened), activate);
  };
  platform::WindowAttributes attributes;
  attributes.tabbingIdentifier = tabbingIdentifier;
  attributes.identifier = windowIdentifier;
  auto window = application_.makeWindow(attributes);
  viewModel->window = window;
  windows_.add(window, viewModel);
  windows_.setContent(window, contentFactory_(viewModel, window));
  return window;
}

void TabOpener::showAlone(const Window& window, bool activate) {
  window->setTabbingMode(TabbingMode::disallowed);
  if (activate)
    window->present();
  else
    window->showUnfocused();
  scope_.spawn(preferTabs(window));
}

TabOpener::Window TabOpener::openTab(const ViewModel& viewModel, const Window& neighbour, bool activate) {
  auto window = makeWindow(viewModel);
  window->setTabbingMode(TabbingMode::preferred);
  neighbour->addTabbedWindow(window);
  if (activate)
    window->present();
  return window;
}

void TabOpener::openFrom(const Window& opener, const ViewModel& viewModel, bool activate) {
  openedTabs_.didOpen(opener, openTab(viewModel, openedTabs_.neighbour(opener), activate));
}

} // namespace ondrel::app
