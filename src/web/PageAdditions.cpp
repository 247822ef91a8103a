#include "web/PageAdditions.h"

#include "web/WebServices.h"

#include <utility>

namespace ondrel::web {

PageAdditions::PageAdditions(std::weak_ptr<WindowViewModel> viewModel, const WebServices& services)
    : viewModel_(std::move(viewModel)), services_(services) {
}

void PageAdditions::didFinish() {
  const auto viewModel = viewModel_.lock();
  if (viewModel && services_.addToPage)
    scope_.spawn(services_.addToPage(viewModel));
}

} // namespace ondrel::web
