#include "ui/KeyTab.h"

#include "app/WindowManager.h"
#include "platform/Application.h"
#include "ui/ObserveTab.h"
#include "web/WindowViewModel.h"

namespace ondrel::ui {

KeyTab::KeyTab(platform::Application& application, const app::WindowManager& windows) : windows_(windows) {
  subscriptions_.push_back(application.windowFocused.subscribe([this](const auto&) { follow(); }));
  subscriptions_.push_back(application.windowWillClose.subscribe([this](const auto&) { follow(); }));
  follow();
}

std::shared_ptr<web::WindowViewModel> KeyTab::viewModel() const {
  return windows_.windows().keyViewModel();
}

void KeyTab::follow() {
  tabSubscriptions_.clear();
  if (const auto tab = viewModel())
    tabSubscriptions_ = observeTab(*tab, [this] { changed.emit(); });
  changed.emit();
}

} // namespace ondrel::ui
