#pragma once

#include "base/Event.h"
#include "platform/GroupChrome.h"
#include "platform/linux/glib/Connection.h"
#include "ui/commands/Command.h"
#include "ui/page/LockButton.h"
#include "ui/page/ZoomRow.h"
#include "ui/widgets/WidthWatch.h"

#include <adwaita.h>

#include <functional>
#include <memory>
#include <vector>

namespace ondrel::settings {
class AppSettings;
}

namespace ondrel::web {
class WindowViewModel;
}

namespace ondrel::ui {

class PrimaryMenu;

// What the bars of all top-levels stand on; outlives them.
struct ChromeServices {
  const PrimaryMenu& menu;
  settings::AppSettings& settings;
  // The model of a browser window; null for other windows.
  std::function<std::shared_ptr<web::WindowViewModel>(const std::shared_ptr<platform::Window>&)> viewModelOf;
  std::function<void()> openNewTab;
  std::function<void()> menuOpens;
  const std::vector<CommandGroup>& commands; // for the keys that come behind the page
};

// The header bar above the tabs of one top-level: shows the tab in front and acts on it.
class BrowserChrome final : public platform::GroupChrome {
 public:
  explicit BrowserChrome(const ChromeServices& services);
  ~BrowserChrome() override;

  platform::NativeView topBar() override { return {bar_.get()}; }
  void selectedWindowDidChange(std::shared_ptr<platform::Window> window) override;

 private:
  using TabWork = void (web::WindowViewModel::*)();
  // A button that works on the tab in front.
  GtkWidget* tabButton(const char* identifier, const char* icon, const char* label, const char* keys,
                       TabWork work);
  GtkWidget* zoomButtons();
  GtkWidget* menuButton();
  void packStart();
  void packEnd();
  void onClicked(GtkWidget* button, std::function<void()> work);
  void focusPage();
  void realized();
  void updateLoading();
  void update();
  void updateVisibility();

  const ChromeServices& services_;
  glib::Ref<GtkWidget> bar_;
  GtkWidget* host_ = nullptr;
  GtkWidget* title_ = nullptr;
  GtkWidget* back_ = nullptr;
  GtkWidget* forward_ = nullptr;
  GtkWidget* reload_ = nullptr;
  GtkWidget* zoomOut_ = nullptr;
  GtkWidget* zoomDefault_ = nullptr;
  GtkWidget* zoomIn_ = nullptr;
  GtkWidget* zoom_ = nullptr; // the three together
  ZoomRow zoomRow_;
  bool hasPageKeys_ = false;
  GtkWidget* newTab_ = nullptr;
  const LockButton lock_;
  int width_ = 0;
  const WidthWatch widthWatch_;

  std::shared_ptr<web::WindowViewModel> tab_;
  std::vector<base::Subscription> tabSubscriptions_;
  std::vector<glib::Connection> connections_;
};

} // namespace ondrel::ui
