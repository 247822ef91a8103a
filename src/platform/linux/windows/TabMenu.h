#pragma once

#include "platform/linux/glib/Connection.h"

#include <adwaita.h>

#include <functional>
#include <vector>

namespace ondrel::platform::windows {

// The menu of a tab: move it to a window of its own, close it, close the others.
class TabMenu {
 public:
  // Both borrowed; they must be alive while the menu is used.
  TabMenu(AdwTabView* view, GtkWidget* topLevel, std::function<void(AdwTabPage*)> closeOthers);

 private:
  void addAction(GActionMap* actions, const char* name, std::function<void(AdwTabPage*)> run);

  std::vector<glib::Connection> connections_;
  glib::WeakRef<AdwTabPage> page_; // whose menu is open
};

} // namespace ondrel::platform::windows
