#include "app/WindowManager.h"

#include "app/ClosedTabs.h"
#include "app/TabKeys.h"
#include "base/Text.h"
#include "base/Translation.h"
#include "platform/Application.h"
#include "platform/Deadlines.h"
#include "platform/WebView.h"
#include "settings/AppSettings.h"
#include "web/WebServices.h"
#include "web/WindowViewModel.h"

#include <algorithm>
#include <utility>

namespace ondrel::app {

using platform::KeyEvent;
using platform::Modifiers;
using platform::TabbingMode;
using web::WindowViewModel;
using WindowPtr = std::shared_ptr<platform::Window>;

namespace {

// A letter that was sent or discarded is done, and one that was closed is in its draft.
bool comesBack(const WindowViewModel& viewModel, const web::WebServices& services) {
  return !viewModel.isDone && !viewModel.isComposeURL() &&
         viewModel.webViewConfiguration != services.scripts.composeConfiguration();
}

void insert(const std::shared_ptr<platform::Window>& window, const platform::WindowGroup& group,
            std::size_t position) {
  const auto members = group.windows();
  members[std::min(std::max<std::size_t>(position, 1), members.size()) - 1]->addTabbedWindow(window);
  if (position == 0)
    window->addTabbedWindow(members.front());
}

} // namespace

WindowManager::WindowManager(platform::Application& application, settings::AppSettings& settings,
                             SessionStore& sessionStore, ClosedTabs& closedTabs,
                             platform::Clipboard& clipboard, const web::WebServices& webServices,
                             BrowserContentFactory contentFactory, bool startsInBackground)
    : application_(application), settings_(settings), closedTabs_(closedTabs), webServices_(webServices),
      windows_(application), tabs_(application, windows_, webServices, std::move(contentFactory)),
      addresses_(application, windows_, tabs_, webServices),
      session_(application, windows_, sessionStore, webServices), conversation_(application, windows_),
      copiedLink_(clipboard, settings) {
  addresses_.setWindowWanted([this] { restoreSession(); });
  if (!startsInBackground)
    later(&WindowManager::restore);
  subscriptions_.push_back(application_.aboutToQuit.subscribe([this] {
    session_.finish();
    closedTabs_.finish();
  }));
  subscriptions_.push_back(
      application_.addKeyDownMonitor([this](const KeyEvent& event) { return keyDown(event); }));
  subscriptions_.push_back(
      application_.windowWillClose.subscribe([this](const WindowPtr& window) { windowWillClose(window); }));
  subscriptions_.push_back(application_.deactivating.subscribe([this] { later(&WindowManager::save); }));
  subscriptions_.push_back(
      application_.windowFocused.subscribe([this](const WindowPtr& window) { tabs_.didFocus(window); }));
  subscriptions_.push_back(settings_.fastmailEnvironmentDidChange.subscribe(
      [this] { later(&WindowManager::environmentChanged); }));
  subscriptions_.push_back(application_.menuOpened.subscribe([this] { copiedLink_.refresh(); }));
  // A link may come while the keyboard is elsewhere.
  for (auto* change : {&conversation_.pageChanged, &windows_.changed, &addresses_.tabReplaced})
    subscriptions_.push_back(change->subscribe([this] { session_.saveSoon(); }));
}

WindowManager::~WindowManager() = default;

void WindowManager::later(void (WindowManager::*work)()) {
  scope_.spawn(onNextTurn(work));
}

async::Task<void> WindowManager::onNextTurn(void (WindowManager::*work)()) {
  (this->*work)();
  co_return;
}

async::Task<void> WindowManager::windowClosed(WindowPtr window) {
  if (session_.isFinished())
    co_return;
  if (windows_.viewModel(window) && windows_.isLastShown(window))
    lastClosedWindowFrame_ = window->frame();
  windows_.remove(window);
  save();
}

bool WindowManager::keyDown(const KeyEvent& event) {
  // The menu's item behind this shortcut shall find a fresh value; it still sees the key.
  if (event.modifiers.exactly(Modifiers::command | Modifiers::shift) &&
      base::lowercasedAscii(event.charactersIgnoringModifiers) == "f")
    copiedLink_.refresh();
  return takeTabKey(event, application_.focusedWindow());
}

void WindowManager::openMainWindow() {
  if (restoreSession())
    return;
  tabs_.showAlone(tabs_.makeWindow(tabs_.newViewModel()));
}

void WindowManager::reopenWindow() {
  if (restoreSession())
    return;
  const auto window = tabs_.makeWindow(tabs_.newViewModel());
  if (lastClosedWindowFrame_)
    window->setFrame(*lastClosedWindowFrame_);
  tabs_.showAlone(window);
}

void WindowManager::newTab() {
  const auto key = application_.focusedWindow();
  if (!key) {
    openMainWindow();
    return;
  }
  key->setTabbingMode(TabbingMode::preferred);
  key->setTabbingIdentifier(std::string(TabOpener::tabbingIdentifier));
  tabs_.openTab(tabs_.newViewModel(), key, true);
}

void WindowManager::printActive() {
  const auto evaluatePrint = [](std::shared_ptr<platform::WebView> webView) -> async::Task<void> {
    [[maybe_unused]] const auto ignored =
        co_await webView->evaluate("window.print()", std::nullopt, platform::evaluationDeadline);
  };
  // Whosever page it is.
  const auto viewModel = windows_.focusedViewModel();
  if (auto webView = viewModel ? viewModel->liveWebView() : nullptr)
    scope_.spawn(evaluatePrint(std::move(webView)));
}

void WindowManager::exportPDFActive() {
  if (const auto viewModel = windows_.focusedViewModel())
    scope_.spawn(viewModel->exportPDF());
}

void WindowManager::environmentChanged() {
  const auto& base = settings_.baseURL();
  for (const auto& viewModel : windows_.viewModels())
    if (viewModel->isWritingLetter())
      viewModel->notice.set(
          base::tr("You are writing here, so this tab stays with the service that it was opened on "
                   "until you close it."));
    else
      viewModel->show(base);
}

bool WindowManager::restoreSession() {
  if (std::exchange(isRestored_, true))
    return false;
  const auto session = session_.load();
  if (!session || session->windows.empty()) {
    openMainWindow();
    return true;
  }
  for (const auto& window : session->windows)
    if (!window.tabs.empty())
      restoreWindow(window);
  return true;
}

void WindowManager::restoreWindow(const PersistedWindow& saved) {
  const auto first = tabs_.makeWindow(session_.restored(saved.tabs.front()));
  if (const auto& frame = saved.frame)
    first->setFrame({frame->x, frame->y, frame->width, frame->height});
  if (saved.isMaximized)
    first->maximize();
  auto previous = first;
  auto selected = first;
  for (std::size_t i = 1; i < saved.tabs.size(); ++i) {
    const auto next = tabs_.makeWindow(session_.restored(saved.tabs[i]));
    next->setTabbingMode(TabbingMode::preferred);
    previous->addTabbedWindow(next);
    previous = next;
    if (i == saved.selectedTab)
      selected = next;
  }
  // Only now, so that no other tab is seen and makes its web view.
  tabs_.showAlone(selected);
}

void WindowManager::windowWillClose(const std::shared_ptr<platform::Window>& window) {
  // Now, while its web view is there.
  const auto closing = session_.isFinished() ? nullptr : windows_.viewModel(window);
  if (closing && comesBack(*closing, webServices_))
    closedTabs_.add(*window, session_.persisted(*closing));
  scope_.spawn(windowClosed(window));
}

const base::Observable<bool>& WindowManager::canReopenClosedTab() const {
  return closedTabs_.canReopen;
}

void WindowManager::reopenClosedTab() {
  restoreSession();
  const auto closed = closedTabs_.take();
  if (!closed)
    return;
  auto group = closed->group.lock();
  if (group && group->windows().empty())
    group = nullptr;
  auto neighbour = windows_.focusedViewModel() ? application_.focusedWindow() : nullptr;
  if (closed->window.frame || (!group && !neighbour)) {
    restoreWindow(closed->window);
    return;
  }
  for (std::size_t i = 0; i < closed->window.tabs.size(); ++i) {
    const auto window = tabs_.makeWindow(session_.restored(closed->window.tabs[i]));
    window->setTabbingMode(TabbingMode::preferred);
    if (group)
      insert(window, *group, closed->positions[i]);
    else
      neighbour->addTabbedWindow(window);
    neighbour = window;
  }
  neighbour->present();
}

} // namespace ondrel::app
