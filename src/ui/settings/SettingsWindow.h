#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"
#include "ui/settings/SettingsSection.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace ondrel::ui {

// The one window of the settings. Changes count at once; there is nothing to confirm.
class SettingsWindow {
 public:
  // `application` may be null. `parent` gives the window that it belongs to, or null.
  SettingsWindow(SettingsServices services, GtkApplication* application, std::function<GtkWindow*()> parent);
  ~SettingsWindow();
  SettingsWindow(const SettingsWindow&) = delete;
  SettingsWindow& operator=(const SettingsWindow&) = delete;

  // Opens it, or brings it to the front.
  void show();
  GtkWindow* window() const { return window_.get(); } // null while it is closed

 private:
  void open();
  void addPages();
  void followPage();
  void showChosenPage();
  void forget();

  const SettingsServices services_;
  GtkApplication* const application_;
  const std::function<GtkWindow*()> parent_;
  // Of the open window; empty while there is none.
  glib::Ref<GtkWindow> window_;
  std::vector<std::unique_ptr<SettingsSection>> sections_;
  std::set<std::string> shownPages_; // those that have something to offer
  glib::Connection closing_;
  glib::Connection pageTurned_;
  base::Subscription pageChosen_;
};

} // namespace ondrel::ui
