#include "ui/widgets/Style.h"

#include "platform/linux/glib/Ref.h"

#include <gtk/gtk.h>

namespace ondrel::ui {

namespace {

constexpr const char* rules = R"(
.mouse-over, .downloads, .page-problem { background-color: @headerbar_bg_color; color: @headerbar_fg_color; }
.page-host { background-color: alpha(currentColor, .1); border-radius: 6px; padding: 2px 8px; }
.mouse-over > box { padding: 5px 12px; }
.zoom-hint { padding: 6px 12px; margin: 12px; border-radius: 9px; }
.zoom-row { padding: 3px 12px; }
.download { padding: 8px 12px; }
.download progressbar > trough { min-width: 40px; }
.page-problem { padding: 9px 12px; }
.announcement { color: @headerbar_fg_color; padding: 6px 12px; border-bottom: 1px solid @borders; animation: announcement-in 250ms ease-out; }
@keyframes announcement-in { from { opacity: 0; } to { opacity: 1; } }
.announcement-info { background-color: mix(@headerbar_bg_color, @accent_bg_color, .15); }
.announcement-info > image { color: @accent_color; }
.announcement-warning { background-color: mix(@headerbar_bg_color, @warning_bg_color, .2); }
.announcement-warning > image { color: @warning_color; }
.announcement-critical { background-color: mix(@headerbar_bg_color, @error_bg_color, .2); }
.announcement-critical > image { color: @error_color; }
.page-dialog-shade { background-color: alpha(black, .4); padding: 18px; }
.page-dialog-card { background-color: @dialog_bg_color; color: @dialog_fg_color; border-radius: 12px; padding: 24px; }
.invalid-setting .subtitle { color: @error_color; opacity: 1; }
.attachments > row { padding: 6px 12px; }
.attachments > row:selected { background-color: alpha(@accent_bg_color, .1); color: inherit; }
.attachments > row:selected:hover { background-color: alpha(@accent_bg_color, .16); }
.attachments-search { padding: 6px 12px; }
.attachments-foot { padding: 18px 12px; }
.attachment-thumbnail { border-radius: 6px; background-color: alpha(currentColor, .07); }
.attachment-symbol { -gtk-icon-size: 20px; }
.attachment-end { font-size: .78em; }
.attachment-more { min-width: 24px; min-height: 24px; padding: 0; }
.attachment-kinds { padding: 6px; }
.attachment-kinds > checkbutton { padding: 4px 6px; }
.attachment-kinds > button { font-weight: normal; padding: 4px 6px; }
.filter-active > button { color: @accent_color; background-color: alpha(@accent_bg_color, .15); }
stackswitcher.circular > button > label { margin: 0; padding: 0; } /* else a page's number is narrower than nothing */
.shortcut-keys label { font-size: .8em; padding: 2px 4px; }
.setup-command { background-color: alpha(currentColor, .06); border-radius: 6px; padding: 9px 12px; }
)";

constexpr const char* icons = "/org/velmora/Ondrel/icons";

} // namespace

void installStyle() {
  const auto provider = glib::adopt(gtk_css_provider_new());
  gtk_css_provider_load_from_data(provider.get(), rules, -1);
  gtk_style_context_add_provider_for_display(gdk_display_get_default(), GTK_STYLE_PROVIDER(provider.get()),
                                             GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  gtk_icon_theme_add_resource_path(gtk_icon_theme_get_for_display(gdk_display_get_default()), icons);
}

} // namespace ondrel::ui
