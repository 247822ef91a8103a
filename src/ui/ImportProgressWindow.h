#pragma once

#include "async/Timer.h"
#include "base/Event.h"
#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <functional>
#include <vector>

namespace ondrel::highlights {
class HighlightTransfer;
}

namespace ondrel::ui {

// Shows how far an import of highlights has come, if it takes long, and lets the user stop it.
class ImportProgressWindow {
 public:
  // `parent` gives the window that it belongs to, or null. The transfer outlives it.
  ImportProgressWindow(highlights::HighlightTransfer& transfer, std::function<GtkWindow*()> parent);
  ~ImportProgressWindow();
  ImportProgressWindow(const ImportProgressWindow&) = delete;
  ImportProgressWindow& operator=(const ImportProgressWindow&) = delete;

  GtkWindow* window() const { return window_.get(); } // null while none is shown

 private:
  void follow();
  void open();
  void close();
  void update();

  highlights::HighlightTransfer& transfer_;
  const std::function<GtkWindow*()> parent_;
  async::Timer delay_;
  bool isWaiting_ = false;
  glib::Ref<GtkWindow> window_;
  GtkProgressBar* bar_ = nullptr;
  GtkLabel* label_ = nullptr;
  GtkWidget* stop_ = nullptr;
  std::vector<glib::Connection> connections_;
  base::Subscription subscription_;
};

} // namespace ondrel::ui
