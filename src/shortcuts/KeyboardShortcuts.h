#pragma once

#include "async/Scope.h"
#include "base/Event.h"
#include "base/Observable.h"
#include "platform/desktop/KeyCombination.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace ondrel::platform {
class GlobalShortcuts;
class UserDefaults;
} // namespace ondrel::platform

namespace ondrel::shortcuts {

// The one shortcut that the program has: hides it and shows it again.
inline constexpr const char* toggleVisibility = "toggleVisibility";

// The keys that the user has given to names, which work whichever application is in front. They are stored
// among the user defaults, under the name itself. Main thread only.
class KeyboardShortcuts {
 public:
  // What a name has at present.
  struct State {
    std::optional<platform::KeyCombination> keys;
    std::string desktopText{}; // the desktop's own words for them, where it has the last word
    std::string problem{};     // a sentence for the user: why these, or those that were wanted, don't work

    bool operator==(const State&) const = default;
  };

  // Both outlive it.
  KeyboardShortcuts(platform::GlobalShortcuts& desktop, platform::UserDefaults& defaults);

  // The handler is called when the keys are let go. Reserves those that are stored, and others that somebody
  // stores later. Once for each name.
  void onKeyUp(const std::string& name, std::function<void()> handler);

  const base::Observable<bool>& isAvailable() const;
  const base::Observable<State>& state(const std::string& name) { return entries_[name].state; }
  // As the user wishes; nothing takes the keys away. Keys that can't be had are not stored, and those from
  // before stay.
  void set(const std::string& name, std::optional<platform::KeyCombination> keys);
  // For as long as it is held no handler is called: the user is choosing keys.
  base::Subscription pause();

 private:
  struct Entry {
    base::Observable<State> state;
    std::function<void()> handler;
    async::TaskHandle work;
  };
  void reserveStored();
  void followStored(const std::string& name);
  async::Task<void> reserve(std::string name, platform::KeyCombination keys, bool isNew);

  platform::GlobalShortcuts& desktop_;
  platform::UserDefaults& defaults_;
  std::map<std::string, Entry> entries_;
  std::shared_ptr<int> pauses_ = std::make_shared<int>(0);
  base::Subscription performed_;
  base::Subscription availability_;
  base::Subscription storedChanges_;
  async::Scope scope_;
};

} // namespace ondrel::shortcuts
