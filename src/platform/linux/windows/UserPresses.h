#pragma once

#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <cstdint>

namespace ondrel::platform::windows {

// How often and when the user pressed a key or a button in a widget, from the toolkit's own events: nothing
// that a page can make.
class UserPresses {
 public:
  explicit UserPresses(GtkWidget* widget);

  // So far. A held key repeats, and is one press.
  std::uint64_t count() const { return count_; }
  // The user has chosen something in a menu of the widget's, whose events are its own. Gives the new number.
  std::uint64_t addChoice();
  // Within the time in which other engines still take a page's new window for the user's.
  bool isRecent() const;

 private:
  void take(GdkEvent* event);

  std::uint64_t count_ = 0;
  bool keyIsDown_ = false;
  std::int64_t last_; // microseconds of the monotonic clock
  glib::Connection events_;
};

} // namespace ondrel::platform::windows
