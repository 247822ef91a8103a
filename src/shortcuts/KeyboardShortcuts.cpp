#include "shortcuts/KeyboardShortcuts.h"

#include "async/sleep.h"
#include "base/Log.h"
#include "platform/UserDefaults.h"
#include "platform/desktop/GlobalShortcuts.h"
#include "shortcuts/KeyCombinationText.h"

#include <utility>

namespace ondrel::shortcuts {

namespace {
constexpr base::Logger logger("system");
}

KeyboardShortcuts::KeyboardShortcuts(platform::GlobalShortcuts& desktop, platform::UserDefaults& defaults)
    : desktop_(desktop), defaults_(defaults),
      performed_(desktop_.performed.subscribe([this](const std::string& name) {
        const auto found = entries_.find(name);
        if (found != entries_.end() && found->second.handler && *pauses_ == 0)
          found->second.handler();
      })),
      availability_(desktop_.isAvailable().observe([this] { reserveStored(); })),
      storedChanges_(defaults_.changed.subscribe([this](const std::string& name) { followStored(name); })) {
}

void KeyboardShortcuts::onKeyUp(const std::string& name, std::function<void()> handler) {
  entries_[name].handler = std::move(handler);
  followStored(name);
}

void KeyboardShortcuts::followStored(const std::string& name) {
  const auto found = entries_.find(name);
  if (found == entries_.end())
    return;
  auto& entry = found->second;
  auto stored = parseKeyCombination(defaults_.string(name).value_or(""));
  if (stored && !mayBeReserved(*stored))
    stored.reset();
  if (stored == entry.state->keys)
    return;
  entry.work.cancel();
  entry.state.set({stored});
  if (!stored)
    desktop_.release(name);
  else if (*isAvailable())
    entry.work = scope_.spawn(reserve(name, *stored, false));
}

void KeyboardShortcuts::reserveStored() {
  for (auto& [name, entry] : entries_)
    if (*isAvailable() && entry.state->keys)
      entry.work = scope_.spawn(reserve(name, *entry.state->keys, false));
}

const base::Observable<bool>& KeyboardShortcuts::isAvailable() const {
  return desktop_.isAvailable();
}

void KeyboardShortcuts::set(const std::string& name, std::optional<platform::KeyCombination> keys) {
  auto& entry = entries_[name];
  entry.work.cancel();
  if (keys) {
    entry.work = scope_.spawn(reserve(name, *std::move(keys), true));
    return;
  }
  desktop_.release(name);
  entry.state.set({});
  defaults_.remove(name);
}

async::Task<void> KeyboardShortcuts::reserve(std::string name, platform::KeyCombination keys, bool isNew) {
  const auto reserved = co_await desktop_.reserve(name, keys);
  const bool cancelled = co_await async::cancelled();
  if (cancelled)
    co_return;
  auto& entry = entries_[name];
  if (!reserved) {
    logger.error("No global shortcut {}: {}", displayText(keys), reserved.error());
    entry.state.set({entry.state->keys, entry.state->desktopText, reserved.error()});
    co_return;
  }
  auto stored = storedText(keys);
  entry.state.set({std::move(keys), *reserved});
  if (isNew)
    defaults_.set(name, std::move(stored));
}

base::Subscription KeyboardShortcuts::pause() {
  ++*pauses_;
  return base::Subscription([pauses = pauses_] { --*pauses; });
}

} // namespace ondrel::shortcuts
