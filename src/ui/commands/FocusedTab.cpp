#include "ui/commands/FocusedTab.h"

#include "app/WindowManager.h"
#include "platform/Application.h"
#include "ui/commands/ObserveTab.h"
#include "web/WindowViewModel.h"

namespace ondrel::ui {

FocusedTab::FocusedTab(platform::Application& application, const app::WindowManager& windows)
    : windows_(windows) {
  subscriptions_.push_back(application.windowFocused.subscribe([this](const auto&) { follow(); }));
  subscriptions_.push_back(application.windowWillClose.subscribe([this](const auto&) { follow(); }));
  follow();
}

std::shared_ptr<web::WindowViewModel> FocusedTab::viewModel() const {
  return windows_.windows().focusedViewModel();
}

void FocusedTab::follow() {
  tabSubscriptions_.clear();
  if (const auto tab = viewModel())
    tabSubscriptions_ = observeTab(*tab, [this] { changed.emit(); });
  changed.emit();
}

} // namespace ondrel::ui
