#include "ui/preview/ZoomButtons.h"

#include "base/Translation.h"
#include "ui/widgets/Widgets.h"

#include <string>
#include <utility>

namespace ondrel::ui {

namespace {

constexpr int widthWithZoom = 520; // pixels; in the header bar
constexpr int spacing = 6;

} // namespace

ZoomButtons::ZoomButtons(std::function<void(Zoom)> zoom)
    : zoom_(std::move(zoom)), inHeader_(makeRow()), below_(gtk_action_bar_new()) {
  gtk_widget_set_name(below_, "preview-zoom");
  gtk_action_bar_set_center_widget(GTK_ACTION_BAR(below_), makeRow());
  update();
}

GtkWidget* ZoomButtons::makeRow() {
  auto* row = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, spacing);
  addButton(row, "preview-smaller", "zoom-out-symbolic", base::tr("Zoom Out"),
            base::tr("Zoom Out") + std::string(" [-]"), Zoom::out);
  addButton(row, "preview-larger", "zoom-in-symbolic", base::tr("Zoom In"),
            base::tr("Zoom In") + std::string(" [+]"), Zoom::in);
  // TRANSLATORS: a verb: to fit the picture into the window
  addButton(row, "preview-fit", "zoom-fit-best-symbolic", base::tr("Fit"),
            base::tr("Fit in the Window") + std::string(" [F]"), Zoom::fit);
  return row;
}

void ZoomButtons::addButton(GtkWidget* row, const char* name, const char* icon, const char* label,
                            const std::string& tooltip, Zoom kind) {
  auto* button = toolbarButton(name, icon, label, tooltip);
  gtk_widget_add_css_class(button, "flat");
  connections_.push_back(
      glib::connect<void(GtkButton*)>(button, "clicked", [this, kind](GtkButton*) { zoom_(kind); }));
  gtk_box_append(GTK_BOX(row), button);
}

void ZoomButtons::setUsed(bool isUsed) {
  isUsed_ = isUsed;
  update();
}

void ZoomButtons::setWidth(int width) {
  isWide_ = width >= widthWithZoom;
  update();
}

void ZoomButtons::update() {
  gtk_widget_set_visible(inHeader_, isUsed_ && isWide_);
  gtk_widget_set_visible(below_, isUsed_ && !isWide_);
}

} // namespace ondrel::ui
