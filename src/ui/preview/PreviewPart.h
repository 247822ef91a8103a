#pragma once

#include <gtk/gtk.h>

namespace ondrel::ui {

enum class Zoom { in, out, original, fit };

// One file on screen, in the manner of its kind.
class PreviewPart {
 public:
  virtual ~PreviewPart() = default;
  virtual GtkWidget* widget() const = 0; // lives as long as the part
  // Has the keyboard at first. No button, which would take the space bar for itself.
  virtual GtkWidget* focus() const { return widget(); }
  virtual bool canZoom() const { return false; }
  virtual void zoom(Zoom) {}
  // One step up (-1) or down, with the keys. False where there is nothing to move.
  virtual bool scroll(int) { return false; }
  // Ctrl+C and Ctrl+A. False where the toolkit's own widgets know what to do.
  virtual bool copy() { return false; }
  virtual bool selectAll() { return false; }
};

} // namespace ondrel::ui
