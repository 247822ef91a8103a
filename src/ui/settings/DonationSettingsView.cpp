#include "ui/settings/DonationSettingsView.h"

#include "base/Text.h"
#include "base/Translation.h"
#include "ui/settings/SettingsRows.h"
#include "ui/widgets/Widgets.h"

namespace ondrel::ui {

namespace {

std::string invitation(const std::string& displayName) {
  return base::trFormat("{} offers all functionality for free.\nIf you’d like to support its development, "
                        "you can buy me a coffee or "
                        "make a small donation.\n\nNo pressure—just gratitude!",
                        displayName);
}

} // namespace

DonationSettingsView::DonationSettingsView(const std::string& displayName, const std::string& coffeeURL,
                                           const std::string& paypalURL,
                                           const std::function<void(const std::string& url)>& openURL)
    : group_(glib::share(ADW_PREFERENCES_GROUP(adw_preferences_group_new()))) {
  // What isn't a row would stand below the rows.
  adw_preferences_group_set_description(group_.get(), base::escapedMarkup(invitation(displayName)).c_str());
  add(base::tr("Buy Me a Coffee"), coffeeURL, openURL);
  add(base::tr("Donate via PayPal"), paypalURL, openURL);
  if (coffeeURL.empty() && paypalURL.empty())
    adw_preferences_group_add(
        group_.get(), wrappedLabel(base::tr("This copy of the program knows no address for donations.")));
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
