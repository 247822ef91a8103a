#pragma once

#include "base/Event.h"
#include "platform/linux/glib/Connection.h"
#include "ui/settings/SettingsSection.h"
#include "ui/settings/SetupCommandRow.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ondrel::ui {

// Switches the local server, sets its port and hands out the command that tells Claude Code of it.
class MCPSettingsView final : public SettingsSection {
 public:
  // The model outlives it.
  MCPSettingsView(mcp::MCPSettingsModel& model, std::function<void(const std::string&)> openURL);

  AdwPreferencesGroup* group() override { return group_.get(); }
  void commit() override { commitPort(); }

 private:
  void makeNotFoundRow();
  void addHelp(std::function<void(const std::string&)> openURL);
  void makePortField();
  void update();
  void commitPort();
  void showPort();
  void showPortError(const std::string& error); // empty for none

  mcp::MCPSettingsModel& model_;
  const glib::Ref<AdwPreferencesGroup> group_;
  GtkSwitch* const enabled_;
  AdwActionRow* const enabledRow_;
  AdwActionRow* const problemRow_;
  GtkEntry* const port_;
  AdwActionRow* const portRow_;
  AdwActionRow* const registeredRow_;
  SetupCommandRow command_;
  AdwActionRow* const notFoundRow_;
  GtkWidget* help_ = nullptr; // none without a page of help
  std::optional<std::int64_t> shownPort_;
  bool hasTypedPort_ = false; // and not confirmed it
  bool isUpdating_ = false;
  std::vector<glib::Connection> connections_;
  base::Subscription changes_;
};

} // namespace ondrel::ui
