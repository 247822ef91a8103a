#pragma once

#include "base/Event.h"

#include <functional>
#include <vector>

namespace ondrel::web {
class WindowViewModel;
}

namespace ondrel::ui {

// Calls back when something of a tab changes that its bar or a command shows.
std::vector<base::Subscription> observeTab(const web::WindowViewModel& viewModel,
                                           const std::function<void()>& changed);

} // namespace ondrel::ui
