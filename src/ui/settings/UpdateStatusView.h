#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"
#include "ui/settings/SettingsSection.h"

#include <vector>

namespace ondrel::ui {

// How far the program is on the way to its next version, with the next step to take; or, in one line, who
// updates it where it can't do so itself.
class UpdateStatusView final : public SettingsSection {
 public:
  // The manager outlives it.
  explicit UpdateStatusView(integrations::UpdateManager& manager);

  AdwPreferencesGroup* group() override { return group_.get(); }

 private:
  struct Button {
    GtkWidget* widget;
    bool (*isOffered)(const integrations::UpdateState& state);
  };
  void addButton(const char* identifier, const char* label, void (integrations::UpdateManager::*action)(),
                 bool (*isOffered)(const integrations::UpdateState& state));
  GtkWidget* notesRow();
  void update();
  void showState();
  void keepFocus();

  integrations::UpdateManager& manager_;
  const glib::Ref<AdwPreferencesGroup> group_;
  AdwActionRow* const row_;
  GtkWidget* const spinner_;
  GtkProgressBar* const bar_;
  GtkLabel* const notes_;
  GtkWidget* const notesRow_;
  std::vector<Button> buttons_;
  glib::Connection firstShown_;
  std::vector<glib::Connection> connections_;
  std::vector<base::Subscription> subscriptions_;
};

} // namespace ondrel::ui
