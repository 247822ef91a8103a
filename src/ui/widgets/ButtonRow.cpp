#include "ui/widgets/ButtonRow.h"

#include <algorithm>

namespace ondrel::ui {

namespace {

constexpr int gap = 6;

// The button, or the next behind it that is to be seen.
GtkWidget* shown(GtkWidget* button) {
  while (button && !gtk_widget_get_visible(button))
    button = gtk_widget_get_next_sibling(button);
  return button;
}

GtkWidget* next(GtkWidget* button) {
  return shown(gtk_widget_get_next_sibling(button));
}

int natural(GtkWidget* button, GtkOrientation orientation, int forSize) {
  int result = 0;
  gtk_widget_measure(button, orientation, forSize, nullptr, &result, nullptr, nullptr);
  return result;
}

// Of those side by side.
int naturalWidth(GtkWidget* row) {
  int width = -gap;
  for (auto* each = shown(gtk_widget_get_first_child(row)); each; each = next(each))
    width += gap + natural(each, GTK_ORIENTATION_HORIZONTAL, -1);
  return std::max(width, 0);
}

int leastWidth(GtkWidget* row) {
  int width = 0;
  for (auto* each = shown(gtk_widget_get_first_child(row)); each; each = next(each)) {
    int least = 0;
    gtk_widget_measure(each, GTK_ORIENTATION_HORIZONTAL, -1, &least, nullptr, nullptr, nullptr);
    width = std::max(width, least);
  }
  return width;
}

int height(GtkWidget* row, int width) {
  const bool isStacked = width >= 0 && width < naturalWidth(row);
  int result = isStacked ? -gap : 0;
  for (auto* each = shown(gtk_widget_get_first_child(row)); each; each = next(each)) {
    const int own = natural(each, GTK_ORIENTATION_VERTICAL, isStacked ? width : -1);
    result = isStacked ? result + gap + own : std::max(result, own);
  }
  return std::max(result, 0);
}

void measure(GtkWidget* row, GtkOrientation orientation, int forSize, int* minimum, int* wanted, int*, int*) {
  const bool isWidth = orientation == GTK_ORIENTATION_HORIZONTAL;
  *wanted = isWidth ? naturalWidth(row) : height(row, forSize);
  *minimum = isWidth ? leastWidth(row) : *wanted;
}

void allocate(GtkWidget* row, int width, int height, int) {
  const int together = naturalWidth(row);
  const bool isStacked = width < together;
  const bool isMirrored = gtk_widget_get_direction(row) == GTK_TEXT_DIR_RTL;
  int x = width - together;
  int bottom = height;
  for (auto* each = shown(gtk_widget_get_first_child(row)); each; each = next(each)) {
    GtkAllocation area{0, 0, width, height};
    if (isStacked) {
      area.height = natural(each, GTK_ORIENTATION_VERTICAL, width);
      area.y = bottom - area.height;
      bottom = area.y - gap;
    } else {
      area.width = natural(each, GTK_ORIENTATION_HORIZONTAL, -1);
      area.x = isMirrored ? width - x - area.width : x;
      x += area.width + gap;
    }
    gtk_widget_size_allocate(each, &area, -1);
  }
}

GtkSizeRequestMode heightForWidth(GtkWidget*) {
  return GTK_SIZE_REQUEST_HEIGHT_FOR_WIDTH;
}

} // namespace

GtkWidget* buttonRow() {
  auto* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
  gtk_widget_set_layout_manager(row, gtk_custom_layout_new(heightForWidth, measure, allocate));
  return row;
}

} // namespace ondrel::ui
