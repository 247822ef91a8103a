#include "app/WindowManager.h"

#include "async/Future.h"
#include "base/Url.h"
#include "platform/Application.h"
#include "platform/Deadlines.h"
#include "platform/WebView.h"
#include "settings/AppSettings.h"
#include "web/MailURL.h"
#include "web/WebServices.h"
#include "web/WindowViewModel.h"

#include <algorithm>

namespace ondrel::app {

using platform::TabbingMode;
using web::WindowViewModel;
using WindowPtr = std::shared_ptr<platform::Window>;
using ViewModelPtr = std::shared_ptr<WindowViewModel>;

namespace {

constexpr std::string_view tabbingIdentifier = "ondrel";
constexpr std::string_view windowIdentifier = "ondrel-browser";

// A lone window is shown with tabs disallowed, which stops the platform from merging it into a group on its
// own, and may be merged by the user from the next turn on.
async::Task<void> preferTabs(std::weak_ptr<platform::Window> weakWindow) {
  if (const auto window = weakWindow.lock())
    window->setTabbingMode(TabbingMode::preferred);
  co_return;
}

} // namespace

WindowPtr WindowManager::makeWindow(const ViewModelPtr& viewModel) {
  const std::weak_ptr weakSelf = self_;
  viewModel->openInNewWindow = [weakSelf](const ViewModelPtr& opened, bool activate) {
    if (const auto self = weakSelf.lock())
      (*self)->showAlone((*self)->makeWindow(opened), activate);
  };
  viewModel->openInNewTab = [weakSelf](const ViewModelPtr& opened, bool activate) {
    const auto self = weakSelf.lock();
    if (!self)
      return;
    auto& openedTabs = (*self)->openedTabs_;
    if (const auto key = (*self)->application_.keyWindow())
      openedTabs.didOpen(key, (*self)->openTab(opened, openedTabs.neighbour(key), activate));
    else
      (*self)->showAlone((*self)->makeWindow(opened), activate);
  };
  platform::WindowAttributes attributes;
  attributes.tabbingIdentifier = tabbingIdentifier;
  attributes.identifier = windowIdentifier;
  auto window = application_.makeWindow(attributes);
  viewModel->window = window;
  windowViewModels_.push_back({window, viewModel, nullptr});
  // Looked up again: filling the window may open others.
  auto content = contentFactory_(viewModel, window);
  const auto made = std::ranges::find(windowViewModels_, window, &Entry::window);
  if (made != windowViewModels_.end())
    made->content = std::move(content);
  windowViewModelsChanged_.emit();
  return window;
}

ViewModelPtr WindowManager::newViewModel() const {
  return WindowViewModel::make(webServices_);
}

void WindowManager::showAlone(const WindowPtr& window, bool activate) {
  window->setTabbingMode(TabbingMode::disallowed);
  if (activate)
    window->makeKeyAndOrderFront();
  else
    window->orderFront();
  scope_.spawn(preferTabs(window));
}

WindowPtr WindowManager::openTab(const ViewModelPtr& viewModel, const WindowPtr& neighbour, bool activate) {
  const auto window = makeWindow(viewModel);
  window->setTabbingMode(TabbingMode::preferred);
  neighbour->addTabbedWindow(window);
  if (activate)
    window->makeKeyAndOrderFront();
  return window;
}

void WindowManager::openMainWindow() {
  showAlone(makeWindow(newViewModel()));
}

void WindowManager::reopenWindow() {
  const auto window = makeWindow(newViewModel());
  if (lastClosedWindowFrame_)
    window->setFrame(*lastClosedWindowFrame_);
  showAlone(window);
}

void WindowManager::newTab() {
  const auto key = application_.keyWindow();
  if (!key) {
    openMainWindow();
    return;
  }
  key->setTabbingMode(TabbingMode::preferred);
  key->setTabbingIdentifier(std::string(tabbingIdentifier));
  openTab(newViewModel(), key, true);
}

ViewModelPtr WindowManager::showIn(const ActiveWindow& window, const std::string& url) {
  window.second->show(url);
  window.first->deminiaturize();
  window.first->makeKeyAndOrderFront();
  return window.second;
}

ViewModelPtr WindowManager::openURL(const std::string& url) {
  application_.activateIgnoringOtherApps();
  const auto windows = withoutLetters();
  if (windows.empty())
    return openBesideLetters(url);
  // Here the key window has no preference: a message goes where mail is shown.
  const auto withMail = std::ranges::find_if(
      windows, [](const ActiveWindow& window) { return web::containsMail(*window.second->urlString); });
  return showIn(withMail == windows.end() ? windows.front() : *withMail, url);
}

// A compose window stays one for its letter.
ViewModelPtr WindowManager::openBesideLetters(const std::string& url) {
  auto viewModel = newViewModel();
  viewModel->urlString.set(url);
  const auto windows = candidates();
  const auto& composing = webServices_.scripts.composeConfiguration();
  const auto neighbour = std::ranges::find_if(windows, [&composing](const ActiveWindow& window) {
    return window.second->webViewConfiguration != composing;
  });
  if (neighbour == windows.end())
    showAlone(makeWindow(viewModel));
  else
    openTab(viewModel, neighbour->first, true);
  return viewModel;
}

ViewModelPtr WindowManager::loadInActiveWindow(const std::string& url) {
  const auto active = activeOf(withoutLetters());
  return active ? showIn(*active, url) : nullptr;
}

void WindowManager::openInNewTabOrWindow(const std::string& url) {
  application_.activateIgnoringOtherApps();
  const auto viewModel = newViewModel();
  viewModel->urlString.set(url);
  if (const auto active = activeWindow())
    openTab(viewModel, active->first, true);
  else
    showAlone(makeWindow(viewModel));
}

const WindowManager::Entry* WindowManager::entry(const platform::Window* window) const {
  const auto found = std::ranges::find_if(
      windowViewModels_, [window](const Entry& each) { return each.window.get() == window; });
  return found == windowViewModels_.end() ? nullptr : &*found;
}

std::vector<WindowManager::ActiveWindow> WindowManager::candidates() const {
  std::vector<ActiveWindow> result;
  for (const auto& window : application_.windows())
    if (const auto* found = entry(window.get()); found && !window->isOrderedOut())
      result.emplace_back(found->window, found->viewModel);
  return result;
}

std::vector<WindowManager::ActiveWindow> WindowManager::withoutLetters() const {
  auto result = candidates();
  std::erase_if(result, [](const ActiveWindow& window) { return window.second->isWritingLetter(); });
  return result;
}

std::optional<WindowManager::ActiveWindow> WindowManager::activeWindow() const {
  return activeOf(candidates());
}

std::optional<WindowManager::ActiveWindow>
WindowManager::activeOf(const std::vector<ActiveWindow>& windows) const {
  const auto key = application_.keyWindow();
  const ActiveWindow* firstWithMail = nullptr;
  for (const auto& candidate : windows) {
    if (!web::containsMail(*candidate.second->urlString))
      continue;
    if (candidate.first == key)
      return candidate;
    if (!firstWithMail)
      firstWithMail = &candidate;
  }
  if (firstWithMail)
    return *firstWithMail;
  if (windows.empty())
    return std::nullopt;
  return windows.front();
}

std::vector<ViewModelPtr> WindowManager::viewModels() const {
  std::vector<ViewModelPtr> all;
  for (const auto& entry : windowViewModels_)
    all.push_back(entry.viewModel);
  return all;
}

ViewModelPtr WindowManager::viewModel(const WindowPtr& window) const {
  const auto* found = window ? entry(window.get()) : nullptr;
  return found ? found->viewModel : nullptr;
}

ViewModelPtr WindowManager::keyViewModel() const {
  return viewModel(application_.keyWindow());
}

bool WindowManager::mainWindowContainsMail() const {
  const auto main = viewModel(application_.mainWindow());
  return main && web::containsMail(*main->urlString);
}

bool WindowManager::hasComposeWindow() const {
  return std::ranges::any_of(windowViewModels_, [](const Entry& each) {
    return each.viewModel->isComposeURL() && !each.window->isOrderedOut();
  });
}

std::optional<std::string> WindowManager::currentAccountParameter() const {
  for (const auto& each : windowViewModels_)
    if (const auto url = base::Url::parse(*each.viewModel->urlString))
      if (auto account = url->queryItem("u"))
        return account;
  return std::nullopt;
}

void WindowManager::printActive() {
  const auto evaluatePrint = [](std::shared_ptr<platform::WebView> webView) -> async::Task<void> {
    [[maybe_unused]] const auto ignored =
        co_await webView->evaluate("window.print()", std::nullopt, platform::evaluationDeadline);
  };
  // Whosever page it is.
  const auto viewModel = keyViewModel();
  if (auto webView = viewModel ? viewModel->liveWebView() : nullptr)
    scope_.spawn(evaluatePrint(std::move(webView)));
}

void WindowManager::exportPDFActive() {
  if (const auto viewModel = keyViewModel())
    scope_.spawn(viewModel->exportPDF());
}

void WindowManager::environmentChanged() {
  const auto& base = settings_.baseURL();
  std::vector<ViewModelPtr> viewModels;
  viewModels.reserve(windowViewModels_.size());
  for (const auto& each : windowViewModels_)
    viewModels.push_back(each.viewModel);
  for (const auto& viewModel : viewModels)
    if (viewModel->isWritingLetter())
      viewModel->notice.set("You are writing here, so this tab stays with the service that it was opened on "
                            "until you close it.");
    else
      viewModel->show(base);
}

bool WindowManager::hasLettersUnderWay() const {
  return std::ranges::any_of(windowViewModels_,
                             [](const Entry& each) { return *each.viewModel->letterIsLeaving; });
}

async::Task<bool> WindowManager::lettersToLeave() const {
  for (;;) {
    const auto leaving = std::ranges::find_if(
        windowViewModels_, [](const Entry& each) { return *each.viewModel->letterIsLeaving; });
    if (leaving == windowViewModels_.end())
      co_return true;
    const auto viewModel = leaving->viewModel;
    auto [resolver, future] = async::makeFuture<bool>();
    const auto changed = std::make_shared<async::Resolver<bool>>(std::move(resolver));
    const auto subscription = viewModel->letterIsLeaving.observe([changed] { changed->resolve(true); });
    const auto told = co_await std::move(future);
    // A letter that has left takes its window with it.
    const auto stays = std::ranges::find(windowViewModels_, viewModel, &Entry::viewModel);
    if (!told || stays != windowViewModels_.end())
      co_return false;
  }
}

} // namespace ondrel::app
