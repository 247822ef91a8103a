#include "ui/settings/ShortcutSettingsView.h"

#include "base/Translation.h"
#include "shortcuts/KeyboardShortcuts.h"

namespace ondrel::ui {

ShortcutSettingsView::ShortcutSettingsView(shortcuts::KeyboardShortcuts& shortcuts)
    : group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))),
      // TRANSLATORS: shows the windows or hides them
      toggleVisibility_(shortcuts, shortcuts::toggleVisibility, base::tr("Toggle visibility")) {
  adw_preferences_group_add(group_.get(), toggleVisibility_.row());
}

} // namespace ondrel::ui
