#include "app/SessionKeeper.h"

#include "app/BrowserWindows.h"
#include "app/SessionLimits.h"
#include "app/SessionStore.h"
#include "async/sleep.h"
#include "platform/Application.h"
#include "platform/WebView.h"
#include "settings/AppSettings.h"
#include "web/WebServices.h"
#include "web/WindowViewModel.h"

#include <algorithm>
#include <chrono>
#include <set>

namespace ondrel::app {

using web::WindowViewModel;

namespace {

constexpr std::chrono::seconds saveDebounce{2};

} // namespace

std::optional<PersistedSession> SessionKeeper::load() {
  hasLoaded_ = true;
  return store_.load();
}

void SessionKeeper::save() {
  if (hasLoaded_ && !isFinished_)
    store_.save(snapshot());
}

void SessionKeeper::saveSoon() {
  saving_.cancel();
  saving_ = scope_.spawn(saveLater());
}

async::Task<void> SessionKeeper::saveLater() {
  const bool sleptThrough = co_await async::sleep(saveDebounce);
  if (sleptThrough)
    save();
}

void SessionKeeper::finish() {
  save();
  isFinished_ = true;
}

PersistedSession SessionKeeper::snapshot() const {
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
      if (const auto tab = windows_.viewModel(member))
        saved.tabs.push_back(persisted(*tab));
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

PersistedTab SessionKeeper::persisted(const WindowViewModel& viewModel) const {
  // The history of a page of somebody else's isn't worth what such a page can make it cost.
  const bool withState =
      services_.settings.isServiceOrigin(*viewModel.urlString) && viewModel.foreignHost->empty();
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
    const auto* restored = std::get_if<web::RestoredPage>(&viewModel.firstPage);
    if (withState && restored && !restored->isReplaced)
      tab.interactionState = restored->state;
    tab.pageZoom = *viewModel.initialPageZoom;
  }
  return tab;
}

std::shared_ptr<WindowViewModel> SessionKeeper::restored(const PersistedTab& tab) const {
  auto viewModel = WindowViewModel::make(services_);
  viewModel->urlString.set(tab.urlString);
  viewModel->title.set(tab.title);
  viewModel->firstPage = web::RestoredPage{tab.interactionState};
  viewModel->initialPageZoom.set(tab.pageZoom);
  viewModel->toolbarVisible.set(tab.toolbarVisible);
  return viewModel;
}

} // namespace ondrel::app
