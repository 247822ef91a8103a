#include "app/ClosedTabs.h"

#include "platform/Window.h"

#include <algorithm>
#include <map>
#include <utility>

namespace ondrel::app {

namespace {

constexpr std::string_view fileName = "closed.json";
// Bytes of the engine's states: of one, which otherwise comes back with its address alone, and of all.
constexpr std::size_t largestState = 256UL * 1024;
constexpr std::size_t largestStates = 4UL * 1024 * 1024;

std::size_t sizeOfStates(const PersistedWindow& window) {
  std::size_t size = 0;
  for (const auto& tab : window.tabs)
    size += tab.interactionState ? tab.interactionState->size() : 0;
  return size;
}

std::size_t positionIn(const std::vector<const platform::Window*>& windows, const platform::Window* window) {
  return static_cast<std::size_t>(std::ranges::find(windows, window) - windows.begin());
}

} // namespace

// The tabs of one top-level that close in the same turn.
struct ClosedTabs::Closing {
  std::weak_ptr<platform::WindowGroup> group; // none for a lone window
  std::vector<const platform::Window*> order; // before the first of them closed
  std::size_t selected = 0;
  PersistedFrame frame;
  bool isMaximized = false;
  std::map<std::size_t, PersistedTab> tabs = {}; // by position
};

ClosedTabs::ClosedTabs(platform::Directories& directories, platform::FileStore& files)
    : store_(directories, files, fileName) {
  if (auto saved = store_.load())
    for (auto& window : saved->windows)
      if (!window.tabs.empty())
        entries_.push_back({std::move(window)});
  canReopen.set(!entries_.empty());
}

ClosedTabs::~ClosedTabs() = default;

ClosedTabs::Closing& ClosedTabs::closingOf(const platform::Window& window) {
  // The last tab of a top-level that closes is in no group any more, and in its place all the same.
  const auto known = std::ranges::find_if(closing_, [&window](const Closing& each) {
    return positionIn(each.order, &window) < each.order.size();
  });
  if (known != closing_.end())
    return *known;
  const auto group = window.tabGroup();
  const auto frame = window.frame();
  Closing closing{group, {&window}, 0, {frame.x, frame.y, frame.width, frame.height}, window.isMaximized()};
  if (group) {
    closing.order.clear();
    for (const auto& member : group->windows())
      closing.order.push_back(member.get());
    closing.selected = positionIn(closing.order, group->selectedWindow().get());
  }
  return closing_.emplace_back(std::move(closing));
}

void ClosedTabs::add(const platform::Window& window, PersistedTab tab) {
  if (closing_.empty())
    scope_.spawn(finishLater());
  if (tab.interactionState && tab.interactionState->size() > largestState)
    tab.interactionState.reset();
  auto& closing = closingOf(window);
  closing.tabs[positionIn(closing.order, &window)] = std::move(tab);
}

async::Task<void> ClosedTabs::finishLater() {
  finish();
  co_return;
}

void ClosedTabs::finish() {
  if (closing_.empty())
    return;
  for (auto& closing : std::exchange(closing_, {})) {
    const auto group = closing.group.lock();
    const bool stays = group && !group->windows().empty();
    Entry entry;
    entry.group = closing.group;
    for (auto& [position, tab] : closing.tabs) {
      if (position == closing.selected)
        entry.window.selectedTab = entry.window.tabs.size();
      entry.positions.push_back(position);
      entry.window.tabs.push_back(std::move(tab));
    }
    if (!stays) {
      entry.window.frame = closing.frame;
      entry.window.isMaximized = closing.isMaximized;
    }
    entries_.push_back(std::move(entry));
  }
  listDidChange();
}

std::optional<ClosedTabs::Entry> ClosedTabs::take() {
  finish();
  if (entries_.empty())
    return std::nullopt;
  auto entry = std::move(entries_.back());
  entries_.pop_back();
  listDidChange();
  return entry;
}

void ClosedTabs::listDidChange() {
  std::size_t size = 0;
  for (const auto& entry : entries_)
    size += sizeOfStates(entry.window);
  while (entries_.size() > most || size > largestStates) {
    size -= sizeOfStates(entries_.front().window);
    entries_.pop_front();
  }
  PersistedSession saved;
  for (const auto& entry : entries_)
    saved.windows.push_back(entry.window);
  store_.save(saved);
  canReopen.set(!entries_.empty());
}

} // namespace ondrel::app
