#pragma once

#include "platform/linux/glib/Ref.h"
#include "ui/page/DownloadRow.h"

#include <gtk/gtk.h>

#include <memory>
#include <vector>

namespace ondrel::ui {

// The downloads of a tab below its page. Takes no place while there are none, and never more than a few rows.
class DownloadProgressBar {
 public:
  DownloadProgressBar();

  GtkWidget* widget() const { return bar_.get(); }
  // Rows of downloads that are in both lists stay as they are.
  void setDownloads(const std::vector<std::shared_ptr<web::DownloadItem>>& downloads);

 private:
  glib::Ref<GtkWidget> bar_;
  GtkWidget* list_;
  std::vector<std::unique_ptr<DownloadRow>> rows_;
};

} // namespace ondrel::ui
