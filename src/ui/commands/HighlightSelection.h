#pragma once

#include "async/Scope.h"
#include "async/Task.h"

#include <memory>

namespace ondrel::web {
class WindowViewModel;
}

namespace ondrel::ui {

class FocusedTab;

// Highlights what is selected in the page of the tab with the keyboard, as the page's own button does, or
// says what is wanted for that; or in that of another tab.
class HighlightSelection {
 public:
  // Outlives it.
  explicit HighlightSelection(FocusedTab& focusedTab) : focusedTab_(focusedTab) {}

  void perform();
  void performIn(const std::shared_ptr<web::WindowViewModel>& tab);

 private:
  async::Task<void> highlightIn(std::weak_ptr<web::WindowViewModel> weakTab);

  FocusedTab& focusedTab_;
  async::Scope scope_;
};

} // namespace ondrel::ui
