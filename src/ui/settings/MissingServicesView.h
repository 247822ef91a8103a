#pragma once

#include "async/Scope.h"
#include "platform/desktop/DesktopServices.h"
#include "platform/linux/glib/Connection.h"
#include "platform/linux/glib/Ref.h"
#include "ui/settings/SettingsSection.h"

#include <vector>

namespace ondrel::ui {

// What the program can't do on this desktop, and what would have to be there for it.
class MissingServicesView final : public SettingsSection {
 public:
  // The services outlive it.
  explicit MissingServicesView(platform::DesktopServices& services);

  AdwPreferencesGroup* group() override { return group_.get(); }

 private:
  async::Task<void> look();
  void addRow(const char* title, const char* subtitle);

  platform::DesktopServices& services_;
  const glib::Ref<AdwPreferencesGroup> group_;
  std::vector<GtkWidget*> rows_; // of the group
  glib::Connection rooted_;
  glib::Connection activated_;
  async::Scope scope_;
};

} // namespace ondrel::ui
