#pragma once

#include "attachments/FilesViewModel.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

#include <functional>
#include <vector>

namespace ondrel::ui {

// What stands below the rows: whether there are more, that they are being fetched, what went wrong.
class ListFoot {
 public:
  // The files outlive it.
  ListFoot(const attachments::FilesViewModel& files, std::function<void()> loadMore);

  GtkWidget* widget() const { return box_.get(); }
  void update();

 private:
  const attachments::FilesViewModel& files_;
  const glib::Ref<GtkWidget> box_;
  GtkWidget* hint_;
  GtkWidget* spinner_;
  GtkWidget* more_;
  GtkWidget* error_;
  glib::Connection clicked_;
};

} // namespace ondrel::ui
