#include "ui/widgets/Toast.h"

#include "base/Text.h"
#include "ui/widgets/Widgets.h"

namespace ondrel::ui {

namespace {
constexpr int mostLines = 6;     // the page is what the window is for
constexpr int marginOfLines = 6; // pixels; one line alone has the height of the buttons beside it
} // namespace

glib::Ref<AdwToast> makeToast(const std::string& text) {
  const auto shown = base::shortDisplayLine(text);
  auto* label = wrappedLabel(shown.c_str());
  gtk_label_set_lines(GTK_LABEL(label), mostLines);
  gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
  // Else a toast that has the height for more lines, for its button, has them with half of its width empty.
  gtk_label_set_natural_wrap_mode(GTK_LABEL(label), GTK_NATURAL_WRAP_NONE);
  gtk_widget_set_tooltip_text(label, shown.c_str());
  gtk_widget_add_css_class(label, "heading");
  gtk_widget_set_margin_top(label, marginOfLines);
  gtk_widget_set_margin_bottom(label, marginOfLines);
  auto toast = glib::adopt(adw_toast_new(""));
  adw_toast_set_custom_title(toast.get(), label);
  return toast;
}

} // namespace ondrel::ui
