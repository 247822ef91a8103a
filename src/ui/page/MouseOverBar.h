#pragma once

#include "platform/linux/glib/Connection.h"

#include <gtk/gtk.h>

#include <functional>
#include <string>
#include <vector>

namespace ondrel::ui {

// The bar with the address of the hovered link. It lies over the lower edge of a page, or the upper one while
// the pointer is where it would be.
class MouseOverBar {
 public:
  // Goes into `overlay`. `left` is called when the pointer leaves that, or comes back. In a window that is no
  // longer the active one the bar stays away until the pointer moves there.
  MouseOverBar(GtkOverlay* overlay, std::function<void()> left);
  MouseOverBar(const MouseOverBar&) = delete;
  MouseOverBar& operator=(const MouseOverBar&) = delete;

  void setAddress(const std::string& address);

 private:
  void followPointer();
  void followActivity();
  void pointerMoved(double x, double y);
  void pointerCameOrWent(bool isThere);
  void update();

  GtkWidget* const overlay_;
  const std::function<void()> left_;
  GtkWidget* bar_;
  GtkWidget* divider_;
  GtkWidget* site_;
  GtkWidget* rest_;
  GtkWidget* row_; // of the two
  bool hasAddress_ = false;
  bool pointerIsAway_ = false; // it was here: what the page tells now is from before
  bool isUnattended_ = false;  // the pointer has rested since the window was no longer the active one
  double pointerX_ = 0;
  double pointerY_ = 0;
  std::vector<glib::Connection> connections_;
  glib::Connection activity_; // of the window that it is in
};

} // namespace ondrel::ui
