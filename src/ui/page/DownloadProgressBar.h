#pragma once

#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"
#include "ui/page/DownloadRow.h"

#include <gtk/gtk.h>

#include <memory>
#include <vector>

namespace ondrel::ui {

// The downloads of a tab below its page. Takes no place while there are none, and never more than a few rows.
// None of them goes while the user has the pointer or the keyboard in it: what they aim at would move. F6
// leads into it and back, since pages keep the Tab key for themselves.
class DownloadProgressBar {
 public:
  // The launcher outlives it.
  explicit DownloadProgressBar(platform::UriLauncher& launcher);
  ~DownloadProgressBar();
  DownloadProgressBar(const DownloadProgressBar&) = delete;
  DownloadProgressBar& operator=(const DownloadProgressBar&) = delete;

  GtkWidget* widget() const { return bar_.get(); }
  // Rows of downloads that are in both lists stay as they are.
  void setDownloads(const std::vector<std::shared_ptr<web::DownloadItem>>& downloads);

 private:
  GtkEventController* addKey();
  bool moveKeyboard();
  void leave(); // the keyboard goes back to where it was
  bool hasPointer() const;
  void tellWhetherHeld();

  platform::UriLauncher& launcher_;
  glib::Ref<GtkWidget> bar_;
  GtkWidget* list_;
  GtkEventControllerMotion* pointer_;
  GtkEventControllerFocus* keyboard_;
  GtkEventController* key_ = nullptr;
  glib::WeakRef<GtkWidget> formerFocus_;
  std::vector<std::unique_ptr<DownloadRow>> rows_;
  std::vector<glib::Connection> connections_;
};

} // namespace ondrel::ui
