#include "ui/settings/NotificationSettingsView.h"

#include "platform/NotificationCenter.h"

namespace ondrel::ui {

NotificationSettingsView::NotificationSettingsView(platform::NotificationCenter& center)
    : center_(center), group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))) {
  auto* row = ADW_ACTION_ROW(adw_action_row_new());
  gtk_widget_set_name(GTK_WIDGET(row), "no-notifications");
  adw_preferences_row_set_title(ADW_PREFERENCES_ROW(row), "New mail can't be announced");
  adw_action_row_set_title_lines(row, 0);
  adw_action_row_set_subtitle(row, "Nothing in this session shows notifications.");
  adw_action_row_set_subtitle_lines(row, 0);
  adw_action_row_add_prefix(row, gtk_image_new_from_icon_name("dialog-warning-symbolic"));
  adw_preferences_group_add(group_.get(), GTK_WIDGET(row));
  gtk_widget_set_visible(GTK_WIDGET(group_.get()), FALSE);
  // Who has started a service for it comes back to this window to see.
  rooted_ = glib::onNotify(group_.get(), "root", [this] {
    activated_ = {};
    if (auto* root = gtk_widget_get_root(GTK_WIDGET(group_.get())))
      activated_ = glib::onNotify(root, "is-active", [this] { scope_.spawn(look()); });
  });
  scope_.spawn(look());
}

async::Task<void> NotificationSettingsView::look() {
  const auto status = co_await center_.authorizationStatus();
  gtk_widget_set_visible(GTK_WIDGET(group_.get()), status == platform::AuthorizationStatus::denied);
}

} // namespace ondrel::ui
