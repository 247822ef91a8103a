#include "ui/settings/BugReportSettingsView.h"

#include "base/Translation.h"

#include <utility>

namespace ondrel::ui {

BugReportSettingsView::BugReportSettingsView(std::function<void()> begin)
    : group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))) {
  adw_preferences_group_set_title(group_.get(), base::tr("Bugs or Wishes?"));
  auto* row = ADW_ACTION_ROW(adw_action_row_new());
  gtk_widget_set_name(GTK_WIDGET(row), "bug-report");
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), base::tr("Report a Bug / Wish"));
  adw_action_row_add_prefix(row, gtk_image_new_from_icon_name("mail-message-new-symbolic"));
  gtk_list_box_row_set_activatable(GTK_LIST_BOX_ROW(row), TRUE);
  clicked_ = glib::connect<void(AdwActionRow*)>(row, "activated",
                                                [begin = std::move(begin)](AdwActionRow*) { begin(); });
  adw_preferences_group_add(group_.get(), GTK_WIDGET(row));
}

} // namespace ondrel::ui
