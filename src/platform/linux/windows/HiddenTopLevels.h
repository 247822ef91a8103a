#pragma once

#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

#include <memory>
#include <vector>

namespace ondrel::platform::windows {

// The top-levels that were taken off the screen together, to be brought back together, stacked as they were.
class HiddenTopLevels {
 public:
  // The windows as they are stacked, those that are known; all others (dialogs) stand above them.
  void hideAll(const std::vector<GtkWindow*>& frontToBack);
  void showAgain();
  // One that is to stay off the screen when the others come back.
  void forget(GtkWindow* window);
  bool any() const { return hidden_; }

 private:
  bool hidden_ = false;
  std::vector<std::unique_ptr<glib::WeakRef<GtkWidget>>> widgets_;
};

} // namespace ondrel::platform::windows
