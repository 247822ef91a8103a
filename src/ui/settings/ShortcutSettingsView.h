#pragma once

#include "platform/linux/glib/Ref.h"
#include "ui/settings/SettingsSection.h"
#include "ui/settings/ShortcutRecorder.h"

namespace ondrel::ui {

// The keys that work whichever application is in front.
class ShortcutSettingsView final : public SettingsSection {
 public:
  // The shortcuts outlive it.
  explicit ShortcutSettingsView(shortcuts::KeyboardShortcuts& shortcuts);

  AdwPreferencesGroup* group() override { return group_.get(); }

 private:
  const glib::Ref<AdwPreferencesGroup> group_;
  ShortcutRecorder toggleVisibility_;
};

} // namespace ondrel::ui
