#include "ui/page/ZoomHint.h"

#include "ui/widgets/ZoomText.h"

#include <chrono>

namespace ondrel::ui {

namespace {
constexpr std::chrono::milliseconds shown{1500};
}

ZoomHint::ZoomHint()
    : label_(glib::share(GTK_WIDGET(g_object_new(
          GTK_TYPE_LABEL, "accessible-role", GTK_ACCESSIBLE_ROLE_STATUS, "name", "zoom-hint", nullptr)))) {
  for (const char* style : {"osd", "zoom-hint", "numeric"})
    gtk_widget_add_css_class(label_.get(), style);
  gtk_widget_set_halign(label_.get(), GTK_ALIGN_END);
  gtk_widget_set_valign(label_.get(), GTK_ALIGN_START);
  gtk_widget_set_can_target(label_.get(), FALSE);
  gtk_widget_set_visible(label_.get(), FALSE);
}

void ZoomHint::show(double zoom) {
  gtk_label_set_text(GTK_LABEL(label_.get()), zoomText(zoom).c_str());
  gtk_widget_set_visible(label_.get(), TRUE);
  hide_ = async::Timer(shown, [this] { gtk_widget_set_visible(label_.get(), FALSE); });
}

} // namespace ondrel::ui
