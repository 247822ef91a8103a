#pragma once

#include "async/Timer.h"
#include "base/Event.h"
#include "base/Observable.h"
#include "highlights/TransferProgress.h"
#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <functional>
#include <optional>
#include <vector>

namespace ondrel::ui {

// Shows how far an export or import of highlights has come, if it takes long, and lets the user stop it.
class TransferProgressWindow {
 public:
  using Progress = highlights::TransferProgress;

  struct Work {
    const char* title;
    // Absent while there is nothing to show. Outlives the window.
    const base::Observable<std::optional<Progress>>& progress;
    std::function<void()> stop;
  };

  // `parent` gives the window that it belongs to, or null.
  TransferProgressWindow(Work work, std::function<GtkWindow*()> parent);
  ~TransferProgressWindow();
  TransferProgressWindow(const TransferProgressWindow&) = delete;
  TransferProgressWindow& operator=(const TransferProgressWindow&) = delete;

  GtkWindow* window() const { return window_.get(); } // null while none is shown

 private:
  void follow();
  void open();
  void close();
  void update();
  void pulse();

  const Work work_;
  const std::function<GtkWindow*()> parent_;
  async::Timer delay_;
  async::Timer pulse_;
  bool isWaiting_ = false;
  glib::Ref<GtkWindow> window_;
  GtkProgressBar* bar_ = nullptr;
  GtkLabel* label_ = nullptr;
  GtkWidget* stop_ = nullptr;
  std::vector<glib::Connection> connections_;
  base::Subscription subscription_;
};

} // namespace ondrel::ui
