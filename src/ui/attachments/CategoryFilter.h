#pragma once

#include "attachments/FilesViewModel.h"
#include "base/Event.h"
#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <vector>

namespace ondrel::ui {

// The button with the menu of the kinds of files.
class CategoryFilter {
 public:
  explicit CategoryFilter(attachments::FilesViewModel& files); // outlives it

  GtkWidget* widget() const { return button_; } // floating

 private:
  GtkWidget* makeMenu();
  void update();

  attachments::FilesViewModel& files_;
  GtkWidget* button_;
  std::vector<GtkWidget*> checks_; // in the order of the enum
  bool isUpdating_ = false;
  std::vector<glib::Connection> connections_;
  base::Subscription filterChanged_;
};

} // namespace ondrel::ui
