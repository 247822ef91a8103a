#include "app/WindowManager.h"

#include "app/ClosedTabs.h"
#include "app/SessionLimits.h"
#include "app/SessionStore.h"
#include "platform/Application.h"
#include "platform/WebView.h"
#include "settings/AppSettings.h"
#include "web/WebServices.h"
#include "web/WindowViewModel.h"

#include <algorithm>
#include <set>

namespace ondrel::app {

using platform::TabbingMode;
using web::WindowViewModel;

namespace {

// The history of a page of somebody else's isn't worth what such a page can make it cost.
bool keepsState(const WindowViewModel& viewModel, const settings::AppSettings& settings) {
  return settings.isServiceOrigin(*viewModel.urlString) && viewModel.foreignHost->empty();
}

PersistedTab persisted(const WindowViewModel& viewModel, bool withState) {
  PersistedTab tab;
  tab.urlString = *viewModel.urlString;
  tab.title = *viewModel.title;
  tab.toolbarVisible = *viewModel.toolbarVisible;
  // A tab without a web view is a restored one that nobody has looked at: what was restored is its state.
  if (const auto webView = viewModel.liveWebView()) {
    if (withState)
      tab.interactionState = webView->interactionState();
    tab.pageZoom = webView->pageZoom();
  } else {
    // Unless another page has been asked for since, which the old state would hide.
    if (withState && !viewModel.loadsURLAfterRestoring)
      tab.interactionState = viewModel.restorationData;
    tab.pageZoom = *viewModel.initialPageZoom;
  }
  return tab;
}

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

PersistedSession WindowManager::snapshot() const {
  PersistedSession session;
  std::set<const platform::Window*> seen;
  for (const auto& window : application_.windows()) {
    if (seen.contains(window.get()))
      continue;
    const auto group = window->tabGroup();
    const auto members = group ? group->windows() : std::vector{window};
    PersistedWindow saved;
    for (const auto& member : members) {
      seen.insert(member.get());
      if (group && member == group->selectedWindow())
        saved.selectedTab = saved.tabs.size();
      if (const auto* registered = entry(member.get()))
        saved.tabs.push_back(
            persisted(*registered->viewModel, keepsState(*registered->viewModel, settings_)));
    }
    if (saved.tabs.empty())
      continue;
    saved.selectedTab = std::min(saved.selectedTab, saved.tabs.size() - 1);
    saved.isMaximized = window->isMaximized();
    if (!members.empty()) {
      const auto frame = members.front()->frame();
      saved.frame = PersistedFrame{frame.x, frame.y, frame.width, frame.height};
    }
    session.windows.push_back(std::move(saved));
  }
  limitSize(session);
  return session;
}

void WindowManager::save() {
  // Before the restoring there is nothing to save but the loss of what is on disk.
  if (hasRestored_ && !isTerminating_)
    sessionStore_.save(snapshot());
}

void WindowManager::restore() {
  const auto session = sessionStore_.load();
  hasRestored_ = true;
  if (!session || session->windows.empty()) {
    openMainWindow();
    return;
  }
  for (const auto& window : session->windows)
    if (!window.tabs.empty())
      restoreWindow(window);
}

void WindowManager::restoreWindow(const PersistedWindow& saved) {
  const auto first = makeWindow(viewModelFor(saved.tabs.front()));
  if (const auto& frame = saved.frame)
    first->setFrame({frame->x, frame->y, frame->width, frame->height});
  if (saved.isMaximized)
    first->maximize();
  auto previous = first;
  auto selected = first;
  for (std::size_t i = 1; i < saved.tabs.size(); ++i) {
    const auto next = makeWindow(viewModelFor(saved.tabs[i]));
    next->setTabbingMode(TabbingMode::preferred);
    previous->addTabbedWindow(next);
    previous = next;
    if (i == saved.selectedTab)
      selected = next;
  }
  // Only now, so that no other tab is seen and makes its web view.
  showAlone(selected);
}

void WindowManager::windowWillClose(const std::shared_ptr<platform::Window>& window) {
  // Now, while its web view is there.
  const auto* closing = isTerminating_ ? nullptr : entry(window.get());
  if (closing && comesBack(*closing->viewModel, webServices_))
    closedTabs_.add(*window, persisted(*closing->viewModel, keepsState(*closing->viewModel, settings_)));
  scope_.spawn(windowClosed(window));
}

const base::Observable<bool>& WindowManager::canReopenClosedTab() const {
  return closedTabs_.canReopen;
}

void WindowManager::reopenClosedTab() {
  const auto closed = closedTabs_.take();
  if (!closed)
    return;
  auto group = closed->group.lock();
  if (group && group->windows().empty())
    group = nullptr;
  auto neighbour = keyViewModel() ? application_.keyWindow() : nullptr;
  if (closed->window.frame || (!group && !neighbour)) {
    restoreWindow(closed->window);
    return;
  }
  for (std::size_t i = 0; i < closed->window.tabs.size(); ++i) {
    const auto window = makeWindow(viewModelFor(closed->window.tabs[i]));
    window->setTabbingMode(TabbingMode::preferred);
    if (group)
      insert(window, *group, closed->positions[i]);
    else
      neighbour->addTabbedWindow(window);
    neighbour = window;
  }
  neighbour->makeKeyAndOrderFront();
}

std::shared_ptr<WindowViewModel> WindowManager::viewModelFor(const PersistedTab& tab) const {
  auto viewModel = newViewModel();
  viewModel->urlString.set(tab.urlString);
  viewModel->title.set(tab.title);
  viewModel->restorationData = tab.interactionState;
  viewModel->initialPageZoom.set(tab.pageZoom);
  viewModel->toolbarVisible.set(tab.toolbarVisible);
  viewModel->loadsWhenShown = true;
  return viewModel;
}

} // namespace ondrel::app
