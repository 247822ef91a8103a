#pragma once

#include "platform/linux/glib/Connection.h"
#include "ui/settings/SettingsSection.h"

namespace ondrel::ui {

// The way to write to the project.
class BugReportSettingsView final : public SettingsSection {
 public:
  explicit BugReportSettingsView(std::function<void()> begin);

  AdwPreferencesGroup* group() override { return group_.get(); }

 private:
  const glib::Ref<AdwPreferencesGroup> group_;
  glib::Connection clicked_;
};

} // namespace ondrel::ui
