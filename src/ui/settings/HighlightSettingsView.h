#pragma once

#include "base/Event.h"
#include "highlights/HighlightSettingsModel.h"
#include "platform/linux/glib/Connection.h"
#include "ui/settings/SettingsSection.h"

#include <vector>

namespace ondrel::ui {

// Turns the labelling of highlighted threads on and names the label.
class HighlightSettingsView final : public SettingsSection {
 public:
  // Both outlive it.
  HighlightSettingsView(settings::AppSettings& settings, jmap::MailQueries& mail);

  AdwPreferencesGroup* group() override { return group_.get(); }

 private:
  void update();

  highlights::HighlightSettingsModel model_;
  const glib::Ref<AdwPreferencesGroup> group_;
  GtkSwitch* const enabled_;
  AdwActionRow* const enabledRow_;
  GtkEntry* const name_;
  AdwActionRow* const nameRow_;
  bool isUpdating_ = false;
  std::vector<glib::Connection> connections_;
  base::Subscription changes_;
};

} // namespace ondrel::ui
