#include "ui/page/ZoomRow.h"

#include "base/Translation.h"
#include "ui/widgets/Widgets.h"
#include "ui/widgets/ZoomText.h"

namespace ondrel::ui {

namespace {

GtkWidget* styled(GtkWidget* button, const char* action, const char* label, const char* keys) {
  gtk_widget_add_css_class(button, "flat");
  gtk_actionable_set_action_name(GTK_ACTIONABLE(button), action);
  setAccessibleLabel(button, label);
  setTooltip(button, std::string(label) + " " + keys);
  return button;
}

} // namespace

ZoomRow::ZoomRow()
    : row_(glib::share(gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0))), percentage_(gtk_button_new()) {
  gtk_widget_set_name(row_.get(), "zoom-row");
  gtk_widget_add_css_class(row_.get(), "zoom-row");
  auto* label = gtk_label_new(base::tr(title));
  gtk_widget_set_hexpand(label, TRUE);
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  gtk_box_append(GTK_BOX(row_.get()), label);
  gtk_box_append(GTK_BOX(row_.get()), styled(gtk_button_new_from_icon_name("zoom-out-symbolic"),
                                             "app.zoom-out", base::tr("Zoom Out"), "⌘-"));
  gtk_widget_add_css_class(percentage_, "numeric");
  gtk_box_append(GTK_BOX(row_.get()), styled(percentage_, "app.actual-size", base::tr("Actual Size"), "⌘0"));
  gtk_box_append(GTK_BOX(row_.get()), styled(gtk_button_new_from_icon_name("zoom-in-symbolic"), "app.zoom-in",
                                             base::tr("Zoom In"), "⌘+"));
  show(1);
}

void ZoomRow::show(double zoom) {
  const auto text = zoomText(zoom);
  gtk_button_set_label(GTK_BUTTON(percentage_), text.c_str());
  setAccessibleLabel(percentage_, base::trFormat("Actual Size, now {}", text));
}

} // namespace ondrel::ui
