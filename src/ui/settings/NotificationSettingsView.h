#pragma once

#include "async/Scope.h"
#include "platform/linux/glib/Connection.h"
#include "ui/settings/SettingsSection.h"

namespace ondrel::ui {

// One line where nothing in this session shows notifications; nothing at all otherwise.
class NotificationSettingsView final : public SettingsSection {
 public:
  // The centre outlives it.
  explicit NotificationSettingsView(platform::NotificationCenter& center);

  AdwPreferencesGroup* group() override { return group_.get(); }

 private:
  async::Task<void> look();

  platform::NotificationCenter& center_;
  const glib::Ref<AdwPreferencesGroup> group_;
  glib::Connection activated_;
  glib::Connection rooted_;
  async::Scope scope_;
};

} // namespace ondrel::ui
