#pragma once

#include "async/Scope.h"
#include "async/Task.h"
#include "base/Event.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ondrel::platform {
class UriLauncher;
}

namespace ondrel::web {
class DownloadItem;
}

namespace ondrel::ui {

// How far a download is, for a person: "1.2 MB / 3.4 MB", "Done", "Failed".
std::string downloadStatus(const web::DownloadItem& item);

// One download: how far it is and what can be done with it.
class DownloadRow {
 public:
  // The launcher outlives it. `leave` is called while the button goes that has the keyboard.
  DownloadRow(std::shared_ptr<web::DownloadItem> item, platform::UriLauncher& launcher,
              std::function<void()> leave);

  GtkWidget* widget() const { return row_.get(); }
  const std::shared_ptr<web::DownloadItem>& item() const { return item_; }

 private:
  void build();
  GtkWidget* addButton(GtkWidget* button, const std::string& label, std::function<void()> act);
  void update();
  void updateProgress();
  void setNote(const std::string& text);
  async::Task<void> open();
  async::Task<void> showInFolder();

  const std::shared_ptr<web::DownloadItem> item_;
  platform::UriLauncher& launcher_;
  const std::function<void()> leave_;
  glib::Ref<GtkWidget> row_;
  GtkWidget* icon_ = nullptr;
  GtkWidget* progress_ = nullptr;
  GtkWidget* note_ = nullptr; // what went wrong
  GtkWidget* status_ = nullptr;
  GtkWidget* buttons_ = nullptr;
  GtkWidget* cancel_ = nullptr;
  GtkWidget* open_ = nullptr;
  GtkWidget* show_ = nullptr;
  std::vector<glib::Connection> clicked_;
  std::vector<base::Subscription> subscriptions_;
  async::Scope scope_;
};

} // namespace ondrel::ui
