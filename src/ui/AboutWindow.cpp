#include "ui/AboutWindow.h"

#include "base/Translation.h"
#include "platform/ProgramInfo.h"
#include "ui/ToolkitDescription.h"
#include "ui/widgets/Widgets.h"

#include <adwaita.h>

namespace ondrel::ui {

namespace {

// The demonstration has no icon of its own: it shows that of the program whose name its name begins with.
std::string iconName(std::string identifier) {
  auto* theme = gtk_icon_theme_get_for_display(gdk_display_get_default());
  while (!identifier.empty() && !gtk_icon_theme_has_icon(theme, identifier.c_str()))
    identifier.resize(identifier.rfind('.') == std::string::npos ? 0 : identifier.rfind('.'));
  return identifier;
}

} // namespace

GtkWindow* presentAbout(const platform::ProgramInfo& programInfo, const std::string& website,
                        const std::string& system, GtkWindow* parent) {
  auto* window = ADW_ABOUT_WINDOW(adw_about_window_new());
  adw_about_window_set_application_name(window, programInfo.displayName.c_str());
  // Without one no place is left for it.
  if (const auto icon = iconName(programInfo.identifier); !icon.empty())
    adw_about_window_set_application_icon(window, icon.c_str());
  adw_about_window_set_version(window, programInfo.shortVersion.c_str());
  adw_about_window_set_comments(window, base::tr("A native desktop home for a hosted mail service"));
  adw_about_window_set_license_type(window, GTK_LICENSE_GPL_3_0);
  const auto debugInfo = system + "Build: " + programInfo.buildNumber + "\n" + describeToolkit(parent);
  adw_about_window_set_debug_info(window, debugInfo.c_str());
  adw_about_window_set_debug_info_filename(window, (programInfo.identifier + ".txt").c_str());
  if (!website.empty())
    adw_about_window_set_website(window, website.c_str());
  gtk_window_set_transient_for(GTK_WINDOW(window), parent);
  gtk_window_set_modal(GTK_WINDOW(window), parent != nullptr);
  gtk_window_set_destroy_with_parent(GTK_WINDOW(window), TRUE);
  nameToolkitControls(GTK_WIDGET(window));
  gtk_window_present(GTK_WINDOW(window));
  return GTK_WINDOW(window);
}

} // namespace ondrel::ui
