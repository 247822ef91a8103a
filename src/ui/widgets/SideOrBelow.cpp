#include "ui/widgets/SideOrBelow.h"

#include <algorithm>

namespace ondrel::ui {

namespace {

constexpr int charactersForText = 24;
constexpr int gapBeside = 12;
constexpr int gapBelow = 6;

struct Size {
  int minimum = 0;
  int natural = 0;
};

Size measured(GtkWidget* widget, GtkOrientation orientation, int forSize) {
  Size size;
  gtk_widget_measure(widget, orientation, forSize, &size.minimum, &size.natural, nullptr, nullptr);
  return size;
}

// In the text's own letters.
int roomForText(GtkWidget* widget) {
  auto* context = gtk_widget_get_pango_context(widget);
  auto* metrics = pango_context_get_metrics(context, nullptr, nullptr);
  const int width = pango_font_metrics_get_approximate_char_width(metrics);
  pango_font_metrics_unref(metrics);
  return PANGO_PIXELS(charactersForText * width);
}

// How the two share a width.
struct Parts {
  Parts(GtkWidget* widget, int width)
      : text(gtk_widget_get_first_child(widget)), control(gtk_widget_get_last_child(widget)),
        controlWidth(std::min(measured(control, GTK_ORIENTATION_HORIZONTAL, -1).natural, width)),
        isBeside(width >= roomForText(widget) + gapBeside + controlWidth),
        textWidth(isBeside ? width - gapBeside - controlWidth : width),
        controlHeight(measured(control, GTK_ORIENTATION_VERTICAL, controlWidth).natural),
        textHeight(measured(text, GTK_ORIENTATION_VERTICAL, textWidth)) {}

  GtkWidget* text;
  GtkWidget* control;
  int controlWidth;
  bool isBeside;
  int textWidth;
  int controlHeight;
  Size textHeight;
};

void measure(GtkWidget* widget, GtkOrientation orientation, int forSize, int* minimum, int* natural, int*,
             int*) {
  const auto text = measured(gtk_widget_get_first_child(widget), GTK_ORIENTATION_HORIZONTAL, -1);
  const auto control = measured(gtk_widget_get_last_child(widget), GTK_ORIENTATION_HORIZONTAL, -1);
  const int wide = text.natural + gapBeside + control.natural;
  if (orientation == GTK_ORIENTATION_HORIZONTAL) {
    *minimum = std::max(text.minimum, control.minimum);
    *natural = wide;
    return;
  }
  const Parts parts(widget, forSize < 0 ? std::max(wide, roomForText(widget) + gapBeside + control.natural)
                                        : forSize);
  const auto together = [&parts](int height) {
    return parts.isBeside ? std::max(height, parts.controlHeight) : height + gapBelow + parts.controlHeight;
  };
  *minimum = together(parts.textHeight.minimum);
  *natural = together(parts.textHeight.natural);
}

void allocate(GtkWidget* widget, int width, int height, int) {
  const Parts parts(widget, width);
  const bool isMirrored = gtk_widget_get_direction(widget) == GTK_TEXT_DIR_RTL;
  const auto place = [&](GtkWidget* child, int x, int y, int childWidth, int childHeight) {
    const GtkAllocation area{isMirrored ? width - x - childWidth : x, y, childWidth, childHeight};
    gtk_widget_size_allocate(child, &area, -1);
  };
  if (parts.isBeside) {
    place(parts.text, 0, 0, parts.textWidth, height);
    place(parts.control, width - parts.controlWidth, (height - parts.controlHeight) / 2, parts.controlWidth,
          parts.controlHeight);
  } else {
    const int textHeight = height - gapBelow - parts.controlHeight;
    place(parts.text, 0, 0, width, textHeight);
    place(parts.control, 0, textHeight + gapBelow, parts.controlWidth, parts.controlHeight);
  }
}

GtkSizeRequestMode heightForWidth(GtkWidget*) {
  return GTK_SIZE_REQUEST_HEIGHT_FOR_WIDTH;
}

} // namespace

GtkWidget* sideOrBelow(GtkWidget* text, GtkWidget* control) {
  auto* box = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
  gtk_widget_set_layout_manager(box, gtk_custom_layout_new(heightForWidth, measure, allocate));
  gtk_box_append(GTK_BOX(box), text);
  gtk_box_append(GTK_BOX(box), control);
  return box;
}

} // namespace ondrel::ui
