#include "ui/settings/MCPSettingsView.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "mcp/MCPSettingsModel.h"
#include "ui/settings/SettingsRows.h"
#include "ui/widgets/Widgets.h"

#include <utility>

namespace ondrel::ui {

namespace {

namespace text = mcp::settings_text;

constexpr int portCharacters = 6;

std::string mnemonic(std::string_view label) {
  return "_" + std::string(label);
}

AdwActionRow* makeProblemRow() {
  auto* row = ADW_ACTION_ROW(adw_action_row_new());
  gtk_widget_set_name(GTK_WIDGET(row), "mcp-problem");
  gtk_widget_add_css_class(GTK_WIDGET(row), "error");
  adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row), FALSE);
  adw_action_row_set_title_lines(row, 0);
  adw_action_row_add_prefix(row, gtk_image_new_from_icon_name("dialog-warning-symbolic"));
  return row;
}

AdwActionRow* makeRegisteredRow() {
  auto* row = ADW_ACTION_ROW(adw_action_row_new());
  gtk_widget_set_name(GTK_WIDGET(row), "mcp-registered");
  adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row), FALSE);
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), base::tr(text::registered));
  adw_action_row_set_subtitle_lines(row, 0);
  adw_action_row_add_prefix(row, gtk_image_new_from_icon_name("emblem-ok-symbolic"));
  return row;
}

} // namespace

MCPSettingsView::MCPSettingsView(mcp::MCPSettingsModel& model,
                                 std::function<void(const std::string&)> openURL)
    : model_(model), group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))),
      enabled_(GTK_SWITCH(gtk_switch_new())), enabledRow_(switchRow("mcp-server", enabled_)),
      problemRow_(makeProblemRow()), port_(GTK_ENTRY(gtk_entry_new())),
      portRow_(fieldRow("mcp-port", port_, portCharacters)), registeredRow_(makeRegisteredRow()),
      command_(base::tr(text::caption), base::tr(text::copy), [this] { model_.copySetupCommand(); }),
      notFoundRow_(ADW_ACTION_ROW(adw_action_row_new())) {
  adw_preferences_group_set_title(group_.get(), base::tr(text::section));
  setRowTitle(enabledRow_, GTK_WIDGET(enabled_), base::tr(text::enable));
  setRowSubtitle(enabledRow_, base::tr(text::whatItOpens));
  makeNotFoundRow();
  addHelp(std::move(openURL));
  makePortField();
  for (auto* row : {GTK_WIDGET(notFoundRow_), GTK_WIDGET(enabledRow_), GTK_WIDGET(problemRow_),
                    GTK_WIDGET(portRow_), GTK_WIDGET(registeredRow_), command_.widget()})
    adw_preferences_group_add(group_.get(), row);

  model_.lookForClaudeCode();
  update();
  changes_ = model_.changed.subscribe([this] { update(); });
  connections_.push_back(glib::onNotify(enabled_, "active", [this] {
    if (!isUpdating_)
      model_.setEnabled(gtk_switch_get_active(enabled_) != FALSE);
  }));
}

void MCPSettingsView::makeNotFoundRow() {
  auto* button = mnemonicButton(mnemonic(base::tr(text::showAnyway)).c_str());
  gtk_widget_set_name(button, "mcp-show-anyway");
  gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
  wrapText(button);
  connections_.push_back(glib::connect<void(GtkButton*)>(button, "clicked", [this](GtkButton*) {
    model_.showAnyway();
    gtk_widget_grab_focus(GTK_WIDGET(enabled_)); // the button has gone
  }));
  gtk_widget_set_name(GTK_WIDGET(notFoundRow_), "mcp-not-found");
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(notFoundRow_), base::tr(text::notFound));
  adw_action_row_set_title_lines(notFoundRow_, 0);
  adw_action_row_add_suffix(notFoundRow_, button);
}

void MCPSettingsView::addHelp(std::function<void(const std::string&)> openURL) {
  if (model_.helpURL().empty())
    return;
  help_ = gtk_button_new_from_icon_name("dialog-information-symbolic");
  gtk_widget_set_name(help_, "mcp-help");
  setAccessibleLabel(help_, base::tr("Help"));
  setTooltip(help_, base::tr("Help"));
  gtk_widget_set_valign(help_, GTK_ALIGN_CENTER);
  gtk_widget_add_css_class(help_, "flat");
  connections_.push_back(glib::connect<void(GtkButton*)>(
      help_, "clicked", [this, openURL = std::move(openURL)](GtkButton*) { openURL(model_.helpURL()); }));
  adw_preferences_group_set_header_suffix(group_.get(), help_);
}

void MCPSettingsView::makePortField() {
  setRowTitle(portRow_, GTK_WIDGET(port_), base::tr(text::port));
  gtk_entry_set_placeholder_text(port_, text::portPrompt);
  gtk_entry_set_input_purpose(port_, GTK_INPUT_PURPOSE_DIGITS);
  gtk_widget_add_css_class(GTK_WIDGET(port_), "numeric");
  connections_.push_back(glib::connect<void(GtkEditable*)>(port_, "changed", [this](GtkEditable*) {
    if (isUpdating_)
      return;
    hasTypedPort_ = true;
    showPortError("");
  }));
  connections_.push_back(
      glib::connect<void(GtkEntry*)>(port_, "activate", [this](GtkEntry*) { commitPort(); }));
  auto* focus = gtk_event_controller_focus_new();
  connections_.push_back(glib::connect<void(GtkEventControllerFocus*)>(
      GTK_EVENT_CONTROLLER_FOCUS(focus), "leave", [this](GtkEventControllerFocus*) { commitPort(); }));
  gtk_widget_add_controller(GTK_WIDGET(port_), focus);
}

void MCPSettingsView::update() {
  isUpdating_ = true;
  const bool isFound = !model_.showsNotFound();
  const bool isOn = isFound && model_.enabled();
  const auto problem = model_.problem();
  gtk_widget_set_visible(GTK_WIDGET(notFoundRow_), !isFound);
  gtk_widget_set_visible(GTK_WIDGET(enabledRow_), isFound);
  if (help_)
    gtk_widget_set_visible(help_, isFound);
  gtk_widget_set_visible(GTK_WIDGET(problemRow_), isFound && problem);
  gtk_widget_set_visible(GTK_WIDGET(portRow_), isOn);
  gtk_widget_set_visible(GTK_WIDGET(registeredRow_), isOn && model_.isRegistered());
  gtk_widget_set_visible(command_.widget(), isOn && !model_.isRegistered());

  gtk_switch_set_active(enabled_, model_.enabled());
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(problemRow_), problem.value_or("").c_str());
  setAccessibleLabel(GTK_WIDGET(problemRow_), problem.value_or(""));
  // What is being typed stays, unless somebody else has set another port.
  if (shownPort_ != model_.port())
    showPort();
  setRowSubtitle(registeredRow_, model_.registeredNote());
  command_.setCommand(model_.setupCommand());
  isUpdating_ = false;
}

void MCPSettingsView::commitPort() {
  if (!hasTypedPort_)
    return;
  const std::string typed = gtk_editable_get_text(GTK_EDITABLE(port_));
  if (!base::trimmed(typed).empty()) {
    if (const auto stored = model_.setPort(typed); !stored) {
      showPortError(stored.error());
      return;
    }
  }
  showPort();
}

void MCPSettingsView::showPort() {
  const bool wasUpdating = std::exchange(isUpdating_, true);
  shownPort_ = model_.port();
  gtk_editable_set_text(GTK_EDITABLE(port_), std::to_string(*shownPort_).c_str());
  gtk_editable_set_position(GTK_EDITABLE(port_), -1);
  hasTypedPort_ = false;
  showPortError("");
  isUpdating_ = wasUpdating;
}

void MCPSettingsView::showPortError(const std::string& error) {
  setRowSubtitle(portRow_, error);
  const auto setStyle = error.empty() ? gtk_widget_remove_css_class : gtk_widget_add_css_class;
  setStyle(GTK_WIDGET(port_), "error");
  setStyle(GTK_WIDGET(portRow_), "invalid-setting");
  gtk_accessible_update_state(GTK_ACCESSIBLE(port_), GTK_ACCESSIBLE_STATE_INVALID,
                              error.empty() ? GTK_ACCESSIBLE_INVALID_FALSE : GTK_ACCESSIBLE_INVALID_TRUE, -1);
}

} // namespace ondrel::ui
