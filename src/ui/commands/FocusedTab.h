#pragma once

#include "base/Event.h"

#include <memory>
#include <vector>

namespace ondrel::app {
class WindowManager;
}

namespace ondrel::platform {
class Application;
}

namespace ondrel::web {
class WindowViewModel;
}

namespace ondrel::ui {

// The tab that commands act on: the one with the keyboard, followed from window to window.
class FocusedTab {
 public:
  FocusedTab(platform::Application& application, const app::WindowManager& windows);

  std::shared_ptr<web::WindowViewModel> viewModel() const;
  // Another tab has the keyboard, or something of this one that commands depend on is new.
  base::Event<> changed;

 private:
  void follow();

  const app::WindowManager& windows_;
  std::vector<base::Subscription> tabSubscriptions_;
  std::vector<base::Subscription> subscriptions_;
};

} // namespace ondrel::ui
