#include "ui/widgets/Style.h"

#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

namespace ondrel::ui {

namespace {

constexpr const char* rules = R"(
.mouse-over, .downloads, .page-problem { background-color: @headerbar_bg_color; color: @headerbar_fg_color; }
.page-host { background-color: alpha(currentColor, .1); border-radius: 6px; padding: 2px 8px; }
.mouse-over > label { padding: 5px 12px; }
.download { padding: 8px 12px; }
.page-problem { padding: 9px 12px; }
.page-dialog-shade { background-color: alpha(black, .4); padding: 18px; }
.page-dialog-card { background-color: @dialog_bg_color; color: @dialog_fg_color; border-radius: 12px; padding: 24px; }
.invalid-setting .subtitle { color: @error_color; opacity: 1; }
.setup-command { background-color: alpha(currentColor, .06); border-radius: 6px; padding: 9px 12px; }
)";

} // namespace

void installStyle() {
  const auto provider = glib::adopt(gtk_css_provider_new());
  gtk_css_provider_load_from_data(provider.get(), rules, -1);
  gtk_style_context_add_provider_for_display(gdk_display_get_default(), GTK_STYLE_PROVIDER(provider.get()),
                                             GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

} // namespace ondrel::ui
