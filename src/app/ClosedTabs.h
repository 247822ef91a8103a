#pragma once

#include "app/PersistedSession.h"
#include "app/SessionStore.h"
#include "async/Scope.h"
#include "base/Observable.h"

#include <deque>
#include <memory>
#include <optional>
#include <vector>

namespace ondrel::platform {
class Window;
class WindowGroup;
} // namespace ondrel::platform

namespace ondrel::app {

// The tabs and windows that were closed last, to be opened again: what was closed in one go is one entry.
// Kept in closed.json, which has the form of session.json: a window for each entry, the last one at the end.
// Main thread only.
class ClosedTabs {
 public:
  static constexpr std::size_t most = 25; // entries

  struct Entry {
    PersistedWindow window; // without a frame where the top-level stayed
    // Where the tabs stood, while the program runs.
    std::weak_ptr<platform::WindowGroup> group = {};
    std::vector<std::size_t> positions = {};
  };

  ClosedTabs(platform::Directories& directories, platform::FileStore& files);
  ~ClosedTabs();

  base::Observable<bool> canReopen{false};

  // The window is about to close, and still where it was; `tab` is its state.
  void add(const platform::Window& window, PersistedTab tab);
  // The last entry, which leaves the list; none when it is empty.
  std::optional<Entry> take();
  // Puts what was closed in this turn of the main loop into the list. Happens by itself a turn later.
  void finish();
  platform::KeptFile& file() { return store_.file(); }

 private:
  struct Closing;

  Closing& closingOf(const platform::Window& window);
  async::Task<void> finishLater();
  void listDidChange();

  SessionStore store_;
  std::deque<Entry> entries_;
  std::vector<Closing> closing_; // in this turn
  async::Scope scope_;
};

} // namespace ondrel::app
