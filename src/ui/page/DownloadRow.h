#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

#include <memory>
#include <string>
#include <vector>

namespace ondrel::web {
class DownloadItem;
}

namespace ondrel::ui {

// How far a download is, for a person: "1.2 MB / 3.4 MB", "Done", "Failed".
std::string downloadStatus(const web::DownloadItem& item);

// One download below the page.
class DownloadRow {
 public:
  explicit DownloadRow(std::shared_ptr<web::DownloadItem> item);

  GtkWidget* widget() const { return row_.get(); }
  const std::shared_ptr<web::DownloadItem>& item() const { return item_; }

 private:
  void build();
  void update();
  void updateProgress();

  const std::shared_ptr<web::DownloadItem> item_;
  glib::Ref<GtkWidget> row_;
  GtkWidget* icon_ = nullptr;
  GtkWidget* progress_ = nullptr;
  GtkWidget* status_ = nullptr;
  std::vector<base::Subscription> subscriptions_;
};

} // namespace ondrel::ui
