#include "ui/commands/ObserveTab.h"

#include "web/WindowViewModel.h"

namespace ondrel::ui {

std::vector<base::Subscription> observeTab(const web::WindowViewModel& viewModel,
                                           const std::function<void()>& changed) {
  std::vector<base::Subscription> result;
  const auto observe = [&](const auto&... fields) { (result.push_back(fields.observe(changed)), ...); };
  observe(viewModel.title, viewModel.urlString, viewModel.foreignHost, viewModel.toolbarVisible,
          viewModel.canGoBack, viewModel.canGoForward, viewModel.canZoomOut, viewModel.canZoomIn,
          viewModel.isZoomDefault, viewModel.initialPageZoom, viewModel.isLoading, viewModel.pageProblem);
  return result;
}

} // namespace ondrel::ui
