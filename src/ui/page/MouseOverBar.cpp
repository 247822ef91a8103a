#include "ui/page/MouseOverBar.h"

#include "base/Text.h"

namespace ondrel::ui {

MouseOverBar::MouseOverBar()
    : bar_(glib::share(gtk_box_new(GTK_ORIENTATION_VERTICAL, 0))), label_(gtk_label_new(nullptr)) {
  gtk_widget_set_name(bar_.get(), "mouse-over");
  gtk_widget_add_css_class(bar_.get(), "mouse-over");
  gtk_widget_set_valign(bar_.get(), GTK_ALIGN_END);
  // The pointer belongs to the page below.
  gtk_widget_set_can_target(bar_.get(), FALSE);
  gtk_widget_set_visible(bar_.get(), FALSE);
  gtk_widget_add_css_class(label_, "dim-label");
  gtk_label_set_ellipsize(GTK_LABEL(label_), PANGO_ELLIPSIZE_END);
  gtk_label_set_single_line_mode(GTK_LABEL(label_), TRUE);
  gtk_label_set_xalign(GTK_LABEL(label_), 0);
  gtk_box_append(GTK_BOX(bar_.get()), gtk_separator_new(GTK_ORIENTATION_HORIZONTAL));
  gtk_box_append(GTK_BOX(bar_.get()), label_);
}

void MouseOverBar::setText(const std::string& text) {
  gtk_label_set_text(GTK_LABEL(label_), base::shortDisplayLine(text).c_str());
  gtk_widget_set_visible(bar_.get(), !text.empty());
}

} // namespace ondrel::ui
