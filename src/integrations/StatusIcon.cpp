#include "integrations/StatusIcon.h"

#include "app/FocusManager.h"
#include "app/ProgramVisibility.h"
#include "base/Translation.h"
#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"

#include <chrono>
#include <utility>

namespace ondrel::integrations {

namespace {

// The panel's menu is closing and would take the foreground again.
constexpr std::chrono::milliseconds menuPause{200};

std::string unreadMails(std::int64_t count) {
  if (count == 0)
    return base::tr("No unread mail");
  return base::trPlural("{} unread mail", "{} unread mails", static_cast<unsigned long>(count), count);
}

} // namespace

StatusIcon::StatusIcon(Services services) : services_(std::move(services)) {
  subscriptions_.push_back(services_.settings.unreadCount.observe([this] { updateFace(); }));
  subscriptions_.push_back(services_.focus.showHideTitle.observe([this] { updateMenu(); }));
  subscriptions_.push_back(
      services_.item.activated.subscribe([this] { services_.visibility.toggleForeground(); }));
  subscriptions_.push_back(services_.settings.defaults().changed.subscribe([this](const std::string& key) {
    if (key == settings::keys::showMenuBarExtra.name)
      followSetting();
  }));
  updateFace();
  updateMenu();
  followSetting();
}

void StatusIcon::followSetting() {
  const bool wanted = services_.settings.get(settings::keys::showMenuBarExtra);
  services_.item.setInserted(wanted);
  if (wanted)
    services_.appeared();
}

void StatusIcon::updateFace() {
  const auto unread = *services_.settings.unreadCount;
  const auto text = unreadMails(unread);
  services_.item.setFace({.attention = unread != 0,
                          .title = unread == 0 ? services_.displayName : services_.displayName + ": " + text,
                          .toolTip = text,
                          .label = unread == 0 ? "" : std::to_string(unread)});
}

void StatusIcon::updateMenu() {
  const auto& name = services_.displayName;
  // TRANSLATORS: {} is the name of the program
  auto showHide = *services_.focus.showHideTitle == "Hide" ? base::trFormat("Hide {}", name)
                                                           : base::trFormat("Show {}", name);
  services_.item.setMenu({{.title = std::move(showHide),
                           .perform = [this] { services_.visibility.toggleForeground(menuPause); }},
                          {.title = base::tr("Settings"),
                           .perform = services_.openSettings,
                           .iconName = "preferences-system-symbolic",
                           .keys = {"Control", "comma"}}});
}

} // namespace ondrel::integrations
