#include "ui/settings/DonationSettingsView.h"

#include "ui/settings/SettingsRows.h"
#include "ui/widgets/Widgets.h"

namespace ondrel::ui {

namespace {

constexpr const char* text = " offers all functionality for free.\nIf you’d like to support its development, "
                             "you can buy me a coffee or "
                             "make a small donation.\n\nNo pressure—just gratitude!";
constexpr const char* withoutAddresses = "This copy of the program knows no address for donations.";

} // namespace

DonationSettingsView::DonationSettingsView(const std::string& displayName, const std::string& coffeeURL,
                                           const std::string& paypalURL,
                                           const std::function<void(const std::string& url)>& openURL)
    : group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))) {
  auto* label = wrappedLabel((displayName + text).c_str());
  gtk_widget_set_margin_bottom(label, 18);
  adw_preferences_group_add(group_.get(), label);
  add("Buy Me a Coffee", coffeeURL, openURL);
  add("Donate via PayPal", paypalURL, openURL);
  if (coffeeURL.empty() && paypalURL.empty())
    adw_preferences_group_set_description(group_.get(), withoutAddresses);
}

void DonationSettingsView::add(const char* title, const std::string& url,
                               const std::function<void(const std::string& url)>& openURL) {
  if (url.empty())
    return;
  auto* row = linkRow(title);
  connections_.push_back(
      glib::connect<void(AdwActionRow*)>(row, "activated", [openURL, url](AdwActionRow*) { openURL(url); }));
  adw_preferences_group_add(group_.get(), GTK_WIDGET(row));
}

} // namespace ondrel::ui
