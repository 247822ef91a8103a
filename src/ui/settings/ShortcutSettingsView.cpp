#include "ui/settings/ShortcutSettingsView.h"

#include "shortcuts/KeyboardShortcuts.h"

namespace ondrel::ui {

ShortcutSettingsView::ShortcutSettingsView(shortcuts::KeyboardShortcuts& shortcuts)
    : group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))),
      toggleVisibility_(shortcuts, shortcuts::toggleVisibility, "Toggle visibility") {
  adw_preferences_group_add(group_.get(), toggleVisibility_.row());
}

} // namespace ondrel::ui
