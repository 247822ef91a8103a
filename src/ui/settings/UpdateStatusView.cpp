#include "ui/settings/UpdateStatusView.h"

#include "base/Translation.h"
#include "integrations/UpdateManager.h"
#include "integrations/UpdateTexts.h"
#include "ui/settings/SettingsRows.h"
#include "ui/widgets/Widgets.h"

#include <algorithm>

namespace ondrel::ui {

namespace {

using integrations::UpdateManager;
using integrations::UpdateState;
using Phase = UpdateState::Phase;

constexpr int barWidth = 140;
constexpr int notesMargin = 12;

bool isUnderWay(const UpdateState& state) {
  return state.phase == Phase::checking || state.phase == Phase::downloading ||
         state.phase == Phase::installing;
}

void setClass(GtkWidget* widget, const char* name, bool isSet) {
  (isSet ? gtk_widget_add_css_class : gtk_widget_remove_css_class)(widget, name);
}

} // namespace

UpdateStatusView::UpdateStatusView(UpdateManager& manager)
    : manager_(manager), group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))),
      row_(ADW_ACTION_ROW(adw_action_row_new())), spinner_(gtk_spinner_new()),
      bar_(GTK_PROGRESS_BAR(gtk_progress_bar_new())), notes_(GTK_LABEL(wrappedLabel(nullptr))),
      notesRow_(notesRow()) {
  gtk_widget_set_name(GTK_WIDGET(row_), "update-status");
  adw_preferences_row_set_use_markup(ADW_PREFERENCES_ROW(row_), FALSE);
  adw_action_row_set_title_lines(row_, 0);
  adw_action_row_set_subtitle_lines(row_, 0);
  adw_action_row_add_suffix(row_, spinner_);
  gtk_widget_set_size_request(GTK_WIDGET(bar_), barWidth, -1);
  gtk_widget_set_valign(GTK_WIDGET(bar_), GTK_ALIGN_CENTER);
  // TRANSLATORS: of the download or installation of a new version
  setAccessibleLabel(GTK_WIDGET(bar_), base::tr("Progress"));
  adw_action_row_add_suffix(row_, GTK_WIDGET(bar_));
  addButton(
      "update-check", base::tr("Check for Updates _Now"), &UpdateManager::checkForUpdates,
      [](const UpdateState& state) { return !isUnderWay(state) && state.phase != Phase::needsRestart; });
  addButton("update-download", base::tr("_Download"), &UpdateManager::download,
            [](const UpdateState& state) { return state.phase == Phase::available; });
  addButton("update-install", base::tr("_Install"), &UpdateManager::install,
            [](const UpdateState& state) { return state.phase == Phase::ready; });
  addButton("update-restart", base::tr("_Restart"), &UpdateManager::restart,
            [](const UpdateState& state) { return state.phase == Phase::needsRestart; });
  addButton("update-cancel", base::tr("_Cancel"), &UpdateManager::cancel, [](const UpdateState& state) {
    return state.phase == Phase::checking || state.phase == Phase::downloading;
  });
  adw_preferences_group_add(group_.get(), GTK_WIDGET(row_));
  adw_preferences_group_add(group_.get(), notesRow_);

  // Not for another page of the same window: asking starts the machine's package service.
  firstShown_ = glib::connect<void(GtkWidget*)>(group_.get(), "map", [this](GtkWidget*) {
    firstShown_.disconnect();
    manager_.lookAround();
  });
  update();
  subscriptions_.push_back(manager_.state.observe([this] { update(); }));
  subscriptions_.push_back(manager_.source.observe([this] { update(); }));
}

void UpdateStatusView::addButton(const char* identifier, const char* label, void (UpdateManager::*action)(),
                                 bool (*isOffered)(const UpdateState& state)) {
  auto* button = mnemonicButton(label);
  gtk_widget_set_name(button, identifier);
  gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
  wrapText(button);
  adw_action_row_add_suffix(row_, button);
  connections_.push_back(glib::connect<void(GtkButton*)>(
      button, "clicked", [this, action](GtkButton*) { (manager_.*action)(); }));
  buttons_.push_back({button, isOffered});
}

GtkWidget* UpdateStatusView::notesRow() {
  auto* label = GTK_WIDGET(notes_);
  gtk_label_set_selectable(notes_, TRUE);
  setAccessibleLabel(label, base::tr("What is new"));
  gtk_widget_set_margin_start(label, notesMargin);
  gtk_widget_set_margin_end(label, notesMargin);
  gtk_widget_set_margin_top(label, notesMargin);
  gtk_widget_set_margin_bottom(label, notesMargin);
  auto* row = adw_preferences_row_new();
  gtk_widget_set_name(row, "update-notes");
  gtk_list_box_row_set_activatable(GTK_LIST_BOX_ROW(row), FALSE);
  gtk_list_box_row_set_child(GTK_LIST_BOX_ROW(row), label);
  return row;
}

void UpdateStatusView::update() {
  const auto source = *manager_.source;
  if (source == platform::UpdateSource::packageService || *manager_.state != UpdateState{}) {
    showState();
    return;
  }
  // Unknown yet, or not ours to do.
  const auto text = source ? integrations::whoUpdates(*source, manager_.programInfo().displayName)
                           : std::string(base::tr("Looking for the package service…"));
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row_), text.c_str());
  setAccessibleLabel(GTK_WIDGET(row_), text);
  setRowSubtitle(row_, "");
  gtk_widget_set_visible(spinner_, !source);
  gtk_spinner_set_spinning(GTK_SPINNER(spinner_), !source);
  gtk_widget_set_visible(GTK_WIDGET(bar_), FALSE);
  gtk_widget_set_visible(notesRow_, FALSE);
  for (const auto& button : buttons_)
    gtk_widget_set_visible(button.widget, FALSE);
}

void UpdateStatusView::showState() {
  const auto& state = *manager_.state;
  const auto headline = integrations::updateHeadline(state, manager_.programInfo());
  const auto remark = integrations::updateRemark(state);
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row_), headline.c_str());
  // TRANSLATORS: two sentences, read aloud
  setAccessibleLabel(GTK_WIDGET(row_),
                     remark.empty() ? headline : base::trFormat("{0}. {1}", headline, remark));
  setRowSubtitle(row_, remark);
  setClass(GTK_WIDGET(row_), "invalid-setting", !state.problem.empty());
  const auto& percentage = state.progress.percentage;
  const bool hasBar = isUnderWay(state) && percentage;
  gtk_widget_set_visible(GTK_WIDGET(bar_), hasBar);
  gtk_progress_bar_set_fraction(bar_, percentage.value_or(0) / 100.0);
  gtk_widget_set_visible(spinner_, isUnderWay(state));
  gtk_spinner_set_spinning(GTK_SPINNER(spinner_), isUnderWay(state));
  gtk_label_set_text(notes_, state.update.notes.c_str());
  gtk_widget_set_visible(notesRow_, !state.update.notes.empty());
  keepFocus();
  for (const auto& button : buttons_)
    gtk_widget_set_visible(button.widget, button.isOffered(state));
}

// A button that has the keyboard and goes would leave it to nobody: the next step gets it.
void UpdateStatusView::keepFocus() {
  const auto& state = *manager_.state;
  const bool leaves = std::ranges::any_of(buttons_, [&](const Button& button) {
    return gtk_widget_is_focus(button.widget) && !button.isOffered(state);
  });
  if (!leaves)
    return;
  // Which is the last one that is there.
  const auto next = std::ranges::find_if(buttons_.rbegin(), buttons_.rend(),
                                         [&](const Button& button) { return button.isOffered(state); });
  if (next == buttons_.rend()) {
    gtk_widget_grab_focus(GTK_WIDGET(row_));
    return;
  }
  gtk_widget_set_visible(next->widget, TRUE);
  gtk_widget_grab_focus(next->widget);
}

} // namespace ondrel::ui
