#pragma once

#include "async/Task.h"
#include "base/Event.h"
#include "base/Observable.h"
#include "platform/desktop/KeyCombination.h"

#include <expected>
#include <string>

namespace ondrel::platform {

// Keys that reach the program whichever application is in front. Main thread only.
class GlobalShortcuts {
 public:
  virtual ~GlobalShortcuts() = default;

  // Whether the desktop has a way at all; on some known a moment after the start.
  virtual const base::Observable<bool>& isAvailable() const = 0;
  // Reserves the keys under a name, in the place of those that it had. Gives them in the desktop's own words
  // where it has the last word on them, else an empty text. An error is one sentence for the user (the keys
  // are taken, say), and what was reserved before stays.
  virtual async::Task<std::expected<std::string, std::string>> reserve(std::string name,
                                                                       KeyCombination keys) = 0;
  virtual void release(const std::string& name) = 0;

  // With the name, when the keys were pressed and let go.
  base::Event<const std::string&> performed;
};

} // namespace ondrel::platform
