#include "ui/settings/MissingServicesView.h"

#include "base/Translation.h"
#include "ui/settings/SettingsRows.h"

#include <utility>

namespace ondrel::ui {

namespace {

using platform::DesktopService;

struct Words {
  const char* title;
  const char* lost;
};

Words wordsFor(DesktopService service) {
  switch (service) {
  case DesktopService::sessionBus:
    return {base::tr("No Session Bus"),
            base::tr("Links of other programs and a second start can't reach this program, and none of "
                     "the services below can be used. Desktops start the bus when you sign in.")};
  case DesktopService::notifications:
    return {
        base::tr("No Notifications"),
        base::tr(
            "New mail is not announced: no notification server runs, \"dunst\" or \"xfce4-notifyd\" say.")};
  case DesktopService::statusIcons:
    return {base::tr("No Icon in the Panel"),
            base::tr("No panel shows icons of programs. GNOME needs an extension for that.")};
  case DesktopService::portal:
    return {base::tr("No Desktop Portal"),
            base::tr("The dark style of the desktop isn't followed, and on Wayland there are no global "
                     "shortcuts. \"xdg-desktop-portal\" provides it.")};
  case DesktopService::accessibility:
    return {base::tr("No Accessibility Bus"),
            base::tr("Screen readers can't read the windows. \"at-spi2-core\" provides it.")};
  case DesktopService::settings:
    return {base::tr("No Store for the Toolkit's Settings"),
            base::tr("File choosers forget how you left them. \"dconf-gsettings-backend\" provides it.")};
  }
  return {};
}

} // namespace

MissingServicesView::MissingServicesView(platform::DesktopServices& services)
    : services_(services), group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))) {
  adw_preferences_group_set_title(group_.get(), base::tr("Desktop"));
  // Who has started a service for it comes back to this window to see.
  rooted_ = glib::onNotify(group_.get(), "root", [this] {
    activated_ = {};
    if (auto* root = gtk_widget_get_root(GTK_WIDGET(group_.get())))
      activated_ = glib::onNotify(root, "is-active", [this] { scope_.spawn(look()); });
  });
  scope_.spawn(look());
}

async::Task<void> MissingServicesView::look() {
  const auto missing = co_await services_.missing();
  for (auto* row : std::exchange(rows_, {}))
    adw_preferences_group_remove(group_.get(), row);
  for (const auto service : missing) {
    const auto words = wordsFor(service);
    addRow(words.title, words.lost);
  }
  if (missing.empty())
    addRow(base::tr("Nothing Is Missing"), base::tr("All that Ondrel uses of this desktop is there."));
}

void MissingServicesView::addRow(const char* title, const char* subtitle) {
  auto* row = ADW_ACTION_ROW(adw_action_row_new());
  gtk_widget_set_name(GTK_WIDGET(row), "desktop-service");
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), title);
  setRowSubtitle(row, subtitle);
  adw_preferences_group_add(group_.get(), GTK_WIDGET(row));
  rows_.push_back(GTK_WIDGET(row));
}

} // namespace ondrel::ui
