#include "ui/page/LockButton.h"

#include "base/Translation.h"
#include "platform/UserDefaults.h"
#include "settings/AppSettings.h"
#include "ui/widgets/Widgets.h"

namespace ondrel::ui {

namespace {

constexpr auto key = settings::keys::hideOnLoseFocus;

} // namespace

LockButton::LockButton(settings::AppSettings& settings)
    : settings_(settings), button_(glib::share(toolbarButton("hide-when-losing-focus", "", "", ""))) {
  clicked_ = glib::connect<void(GtkButton*)>(button_.get(), "clicked",
                                             [this](GtkButton*) { settings_.set(key, !settings_.get(key)); });
  changes_ = settings_.defaults().changed.subscribe([this](const std::string& name) {
    if (name == key.name)
      update();
  });
  update();
}

void LockButton::update() {
  const bool hides = settings_.get(key);
  gtk_button_set_icon_name(GTK_BUTTON(button_.get()),
                           hides ? "changes-allow-symbolic" : "changes-prevent-symbolic");
  // TRANSLATORS: whether the window stays where it is when it loses the focus (locked) or hides
  setAccessibleLabel(button_.get(), hides ? base::tr("Unlocked") : base::tr("Locked"));
  const auto* text =
      hides ? base::tr("Hides when losing focus") : base::tr("Does not hide when losing focus");
  setTooltip(button_.get(), std::string(text) + " ⌘L");
}

} // namespace ondrel::ui
