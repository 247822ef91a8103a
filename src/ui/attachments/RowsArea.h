#pragma once

#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

#include <functional>

namespace ondrel::ui {

// What decides for a scrolled area where its children are.
struct RowsAreaOwner {
  std::function<int()> width;                          // the least that they need, in pixels
  std::function<void(int width, int height)> allocate; // gives all of them their places
  // The keyboard comes by Tab or goes on; false where it leaves the area.
  std::function<bool(GtkDirectionType)> moveFocus;
};

// A list as the toolkit's style and assistive technologies know it, with the scrolling of a scrolled window
// around it, whose children are placed by the owner.
glib::Ref<GtkWidget> makeRowsArea(RowsAreaOwner owner);
// From now on it is empty and asks nobody.
void closeRowsArea(GtkWidget* area);

} // namespace ondrel::ui
