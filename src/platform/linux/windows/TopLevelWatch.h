#pragma once

#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <functional>
#include <map>
#include <memory>

namespace ondrel::platform::windows {

// Which of the program's top-levels has the keyboard, dialogs included.
class TopLevelWatch {
 public:
  explicit TopLevelWatch(std::function<void()> changed);

  GtkWindow* active() const; // null: another application has it
  glib::Ref<GtkWindow> lastActivated() const { return lastActivated_.lock(); } // null when it has gone

 private:
  struct Followed {
    explicit Followed(GtkWindow* topLevel) : window(topLevel) {}
    glib::WeakRef<GtkWindow> window;
    glib::Connection active;
  };
  void follow();

  std::function<void()> changed_;
  glib::Ref<GListModel> topLevels_;
  glib::Connection listConnection_;
  glib::WeakRef<GtkWindow> lastActivated_;
  std::map<GtkWindow*, std::unique_ptr<Followed>> followed_;
};

} // namespace ondrel::platform::windows
