#pragma once

#include "async/Scope.h"

#include <memory>

namespace ondrel::web {

class WindowViewModel;
struct WebServices;

// What features do with a page that has loaded, for as long as it is there. Main thread only.
class PageAdditions {
 public:
  // The services outlive it.
  PageAdditions(std::weak_ptr<WindowViewModel> viewModel, const WebServices& services);

  void didFinish();
  // Another page takes its place, or its process has ended.
  void pageGoes() { scope_.cancelAll(); }

 private:
  const std::weak_ptr<WindowViewModel> viewModel_;
  const WebServices& services_;
  async::Scope scope_;
};

} // namespace ondrel::web
