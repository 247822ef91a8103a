#pragma once

#include "platform/linux/glib/Connection.h"
#include "ui/preview/PreviewPart.h"

#include <gtk/gtk.h>

#include <functional>
#include <vector>

namespace ondrel::ui {

// The buttons that make what is shown larger and smaller: in the header bar, and in a bar below the file
// where the header bar has no room for them. The window holds the widgets.
class ZoomButtons {
 public:
  explicit ZoomButtons(std::function<void(Zoom)> zoom);

  GtkWidget* inHeader() const { return inHeader_; }
  GtkWidget* below() const { return below_; }
  // Whether the file can be zoomed.
  void setUsed(bool isUsed);
  // Pixels, of the window.
  void setWidth(int width);

 private:
  GtkWidget* makeRow();
  void addButton(GtkWidget* row, const char* name, const char* icon, const char* label,
                 const std::string& tooltip, Zoom kind);
  void update();

  const std::function<void(Zoom)> zoom_;
  std::vector<glib::Connection> connections_;
  GtkWidget* inHeader_;
  GtkWidget* below_;
  bool isUsed_ = false;
  bool isWide_ = false;
};

} // namespace ondrel::ui
