#pragma once

#include "platform/linux/glib/Connection.h"
#include "ui/settings/SettingsSection.h"

#include <vector>

namespace ondrel::ui {

// How the project can be supported.
class DonationSettingsView final : public SettingsSection {
 public:
  // An empty address is not offered.
  DonationSettingsView(const std::string& displayName, const std::string& coffeeURL,
                       const std::string& paypalURL,
                       const std::function<void(const std::string& url)>& openURL);

  AdwPreferencesGroup* group() override { return group_.get(); }

 private:
  void add(const char* title, const std::string& url,
           const std::function<void(const std::string& url)>& openURL);

  const glib::Ref<AdwPreferencesGroup> group_;
  std::vector<glib::Connection> connections_;
};

} // namespace ondrel::ui
